// The service core on its sockets: datagrams in, datagrams out, asleep in between.
#pragma once

#include "simulator/listeners.hpp"
#include "simulator/service.hpp"

#include <functional>

namespace vantu::orvanta::simulator {

class server {
  public:
    // Both outlive the server.
    server(service& core, const listeners& sockets) : core_(core), sockets_(sockets) {}

    // Serves until stop says so, asked at least every 200 ms and after every signal; then says goodbye
    // to all clients.
    void serve(const std::function<bool()>& stop);

  private:
    void receive_waiting();
    void send_outgoing();

    service& core_;
    const listeners& sockets_;
    receive_record record_;
};

} // namespace vantu::orvanta::simulator
