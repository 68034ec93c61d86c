#include "send.hpp"

#include "socket_codes.hpp"
#include "vantu/orvanta/common/platform.hpp"

#include <optional>
#include <span>

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

// The lease also keeps the addresses in place.
std::optional<send_result> send_noted(vantu_orvanta_context& context, const byte_buffer& datagram,
                                      noted_datagram& note) {
    const shared_socket::lease lease(context.socket);
    if (lease.get() == invalid_socket) {
        return std::nullopt;
    }
    const std::span<const std::byte> bytes{datagram.unread(), datagram.read_len()};
    const moment before = moment_now();
    const send_result result = try_send(lease.get(), bytes, context.service);
    if (result.status == socket_status::ok) {
        note.note_sent(before, lease.get(), bytes, context.service);
    }
    return result;
}

sent outcome_of(vantu_orvanta_context& context, const std::optional<send_result>& result) {
    if (!result) {
        return {vantu_orvanta_invalid_connection_state, 0};
    }
    if (result->status == socket_status::ok) {
        context.connection.note_send(platform::steady_now_ns());
    }
    return {client_code_from_socket_status(result->status), result->system_error};
}

std::int32_t code_of(const sent& result) {
    if (result.failure != 0) {
        log_send_failure(result.failure);
    }
    return result.code;
}

} // namespace

sent send_unlogged(vantu_orvanta_context& context, const byte_buffer& datagram) {
    return outcome_of(context, send_under_lease(context, datagram));
}

sent send_unlogged(vantu_orvanta_context& context, const byte_buffer& datagram, noted_datagram& note) {
    return outcome_of(context, send_noted(context, datagram, note));
}

std::int32_t send(vantu_orvanta_context& context, const byte_buffer& datagram) {
    if (context.traffic.is_off()) [[likely]] {
        return code_of(send_unlogged(context, datagram));
    }
    noted_datagram note;
    const sent result = send_unlogged(context, datagram, note);
    note.tell(context.traffic);
    return code_of(result);
}

} // namespace vantu::orvanta
