#include "send.hpp"

#include "socket_codes.hpp"
#include "vantu/orvanta/common/platform.hpp"

#include <optional>

namespace vantu::orvanta {
namespace {

// Nothing when the context is not connected.
std::optional<send_result> send_under_lease(vantu_orvanta_context& context, const byte_buffer& datagram) {
    const shared_socket::lease lease(context.socket);
    if (lease.get() == invalid_socket) {
        return std::nullopt;
    }
    return try_send(lease.get(), {datagram.unread(), datagram.read_len()}, context.service);
}

} // namespace

std::int32_t send(vantu_orvanta_context& context, const byte_buffer& datagram) {
    const std::optional<send_result> sent = send_under_lease(context, datagram);
    if (!sent) {
        return vantu_orvanta_invalid_connection_state;
    }
    if (sent->status == socket_status::ok) {
        context.connection.note_send(platform::steady_now_ns());
    } else if (sent->status == socket_status::os_error) {
        log_send_failure(sent->system_error);
    }
    return client_code_from_socket_status(sent->status);
}

} // namespace vantu::orvanta
