// One poll: keep-alive, at most one datagram, at most one operation.
#include "runtime/poll.hpp"

#include "runtime/receive.hpp"
#include "runtime/status_codes.hpp"
#include "runtime/transmit.hpp"
#include "vantu/orvanta/common/diagnostics/log.hpp"
#include "vantu/orvanta/common/diagnostics/version.hpp"
#include "vantu/orvanta/common/utils/platform.hpp"
#include "vantu/orvanta/communication/header.hpp"

#include <cstring>

namespace vantu::orvanta {
namespace {

using namespace communication;

// Drops what is left of a datagram that is not understood.
std::int32_t reject(byte_buffer& buffer, const source_location& where, const char* message) {
    log(log_level::info, where, message);
    buffer.reset();
    return vantu_orvanta_protocol_parse_failed;
}

bool keep_alive_due(std::int64_t last_send_ns) {
    const std::int64_t due_ns = last_send_ns + keep_alive_interval_ns;
    // The cheap clock settles it in all but the last moments of each second.
    if (platform::coarse_now_ns() + platform::coarse_clock_lag_ns < due_ns) {
        return false;
    }
    return due_ns <= platform::steady_now_ns();
}

} // namespace

std::int32_t keep_alive_if_due(vantu_orvanta_context& context) {
    if (!keep_alive_due(context.last_send_ns.load(std::memory_order_relaxed))) {
        return vantu_orvanta_success;
    }
    return transmit_operation<op_code::keep_alive>(context, 0, {});
}

std::int32_t receive_datagram(vantu_orvanta_context& context) {
    byte_buffer& buffer = context.receive.buffer;
    buffer.reset();
    const socket_status status = recv_packet(context.connection.socket(), context.receive);
    if (status == socket_status::would_block) {
        return vantu_orvanta_success;
    }
    if (status != socket_status::ok) {
        return client_code_from_socket_status(status);
    }
    if (!buffer.can_read<proto::header>()) {
        return reject(buffer, locations::poll_header_length, "vantu_orvanta_poll: Cannot read header");
    }
    const auto& header = buffer.read<proto::header>();
    if (header.magic != proto::header_magic) {
        return reject(buffer, locations::poll_header_magic, "vantu_orvanta_poll: Header magic mismatch");
    }
    if (header.version != proto::protocol_version) {
        return reject(buffer, locations::poll_header_version, "vantu_orvanta_poll: Header version mismatch");
    }
    if (!buffer.can_read<proto::op>()) {
        return reject(buffer, locations::poll_operation_length,
                      "vantu_orvanta_poll: Cannot read communication::proto::op");
    }
    return vantu_orvanta_success;
}

std::int32_t take_operation(vantu_orvanta_context& context, vantu_orvanta_event& event) {
    byte_buffer& buffer = context.receive.buffer;
    const auto& op = buffer.read<proto::op>();
    if (op.magic != proto::op_magic) {
        return reject(buffer, locations::poll_operation_magic,
                      "vantu_orvanta_poll: communication::proto::op magic mismatch");
    }
    const std::int32_t code = receive_operation(buffer, context.devices, op, event);
    if (event.event_type == vantu_orvanta_event_disconnected) {
        context.connection.close();
    }
    return code;
}

std::int32_t poll(vantu_orvanta_context& context, vantu_orvanta_event& event) {
    const std::lock_guard lock(context.mutex);
    if (!context.connection.is_open()) {
        return vantu_orvanta_invalid_connection_state;
    }
    std::memset(&event, 0, sizeof(event));
    if (const std::int32_t code = keep_alive_if_due(context); code != vantu_orvanta_success) {
        return code;
    }
    const byte_buffer& buffer = context.receive.buffer;
    if (!buffer.can_read<proto::op>()) {
        const std::int32_t code = receive_datagram(context);
        if (code != vantu_orvanta_success || !buffer.can_read<proto::op>()) {
            return code;
        }
    }
    return take_operation(context, event);
}

} // namespace vantu::orvanta
