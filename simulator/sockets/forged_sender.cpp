#include "simulator/sockets/forged_sender.hpp"

#include "simulator/sockets/listeners.hpp"

namespace vantu::orvanta::simulator {

forged_sender::~forged_sender() {
    for (socket_handle& socket : sockets_) {
        close_socket(socket);
    }
}

socket_handle forged_sender::socket_to(const peer& to) {
    if (to.listener >= sockets_.size()) {
        return invalid_socket;
    }
    socket_handle& socket = sockets_[to.listener];
    if (socket == invalid_socket) {
        socket = open_bound_socket(listener_hosts[to.listener], "0").socket;
    }
    return socket;
}

} // namespace vantu::orvanta::simulator
