// Sockets for forged datagrams, which come from another address than the service.
#pragma once

#include "network/socket.hpp"
#include "simulator/service/peer.hpp"

#include <array>

namespace vantu::orvanta::simulator {

class forged_sender {
  public:
    forged_sender() = default;
    ~forged_sender();
    forged_sender(const forged_sender&) = delete;
    forged_sender& operator=(const forged_sender&) = delete;

    // The socket from which forged datagrams go to the peer; invalid where there can be none.
    [[nodiscard]] socket_handle socket_to(const peer& to);

  private:
    // One on each loopback address, opened when first used; a listener's number is its address's.
    std::array<socket_handle, 2> sockets_{invalid_socket, invalid_socket};
};

} // namespace vantu::orvanta::simulator
