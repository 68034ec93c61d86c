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

sent send_unlogged(vantu_orvanta_context& context, const byte_buffer& datagram) {
    const std::optional<send_result> result = send_under_lease(context, datagram);
    if (!result) {
        return {vantu_orvanta_invalid_connection_state, 0};
    }
    if (result->status == socket_status::ok) {
        context.connection.note_send(platform::steady_now_ns());
    }
    return {client_code_from_socket_status(result->status), result->system_error};
}

std::int32_t send(vantu_orvanta_context& context, const byte_buffer& datagram) {
    const sent result = send_unlogged(context, datagram);
    if (result.failure != 0) {
        log_send_failure(result.failure);
    }
    return result.code;
}

} // namespace vantu::orvanta
