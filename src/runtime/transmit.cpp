// The send path, and the connection that it shares with who closes it.
#include "runtime/transmit.hpp"

#include "runtime/status_codes.hpp"
#include "vantu/orvanta/common/utils/platform.hpp"

#include <thread>

namespace vantu::orvanta {

void connection::attach(socket_handle socket) {
    close();
    socket_.store(socket, std::memory_order_release);
}

void connection::close() {
    // The exchange and the lease's addition are both sequentially consistent: either the sender sees
    // that the socket is gone, or this sees the sender.
    socket_handle socket = socket_.exchange(invalid_socket);
    if (socket == invalid_socket) {
        return;
    }
    while (senders_.load() != 0) {
        std::this_thread::yield();
    }
    close_socket(socket);
}

std::int32_t transmit(vantu_orvanta_context& context, byte_buffer& datagram) {
    const connection::lease lease(context.connection);
    if (lease.socket() == invalid_socket) {
        return vantu_orvanta_invalid_connection_state;
    }
    const socket_status status = send_packet(lease.socket(), datagram, context.service);
    if (status == socket_status::ok) {
        context.last_send_ns.store(platform::steady_now_ns(), std::memory_order_relaxed);
    }
    return client_code_from_socket_status(status);
}

} // namespace vantu::orvanta
