#include "simulator/sockets/forged_sender.hpp"

#include "simulator/sockets/listeners.hpp"

namespace vantu::orvanta::simulator {

forged_sender::~forged_sender() {
    for (socket_handle& socket : sockets_) {
        close_socket(socket);
    }
}

void forged_sender::send(const departure& forged) {
    if (forged.to.listener >= sockets_.size()) {
        return;
    }
    socket_handle& socket = sockets_[forged.to.listener];
    if (socket == invalid_socket) {
        socket = open_bound_socket(listener_hosts[forged.to.listener], "0").socket;
    }
    if (socket != invalid_socket) {
        (void)send_bytes(socket, forged.bytes, forged.to.address);
    }
}

} // namespace vantu::orvanta::simulator
