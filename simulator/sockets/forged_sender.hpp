// Sends forged datagrams from sockets of its own, so that they come from another address than the service.
#pragma once

#include "network/socket.hpp"
#include "simulator/faults/fault_pipeline.hpp"

#include <array>

namespace vantu::orvanta::simulator {

class forged_sender {
  public:
    forged_sender() = default;
    ~forged_sender();
    forged_sender(const forged_sender&) = delete;
    forged_sender& operator=(const forged_sender&) = delete;

    // A datagram that cannot be sent is lost, as any datagram may be.
    void send(const departure& forged);

  private:
    // One on each loopback address, opened when first used; a listener's number is its address's.
    std::array<socket_handle, 2> sockets_{invalid_socket, invalid_socket};
};

} // namespace vantu::orvanta::simulator
