#include "core/connection.hpp"

#include "core/operation_decoder.hpp"
#include "vantu/orvanta/error_codes.h"

namespace vantu::orvanta {

using namespace communication;

void connection::accept(handshake_reply&& reply, std::int64_t now_ns) noexcept {
    client_id_ = reply.client_id;
    devices_.swap(reply.devices);
    is_over_ = false;
    note_send(now_ns);
}

std::int32_t connection::begin_datagram(rejection& rejected) {
    if (!buffer_.can_read<proto::header>()) {
        return reject(reject_reason::header_length, rejected);
    }
    const auto& header = buffer_.read<proto::header>();
    if (header.magic != proto::header_magic) {
        return reject(reject_reason::header_magic, rejected);
    }
    if (header.version != proto::protocol_version) {
        return reject(reject_reason::header_version, rejected);
    }
    if (!has_operation()) {
        return reject(reject_reason::operation_length, rejected);
    }
    return vantu_orvanta_success;
}

std::int32_t connection::decode(vantu_orvanta_event& event, rejection& rejected) {
    const auto& op = buffer_.read<proto::op>();
    if (op.magic != proto::op_magic) {
        return reject(reject_reason::operation_magic, rejected);
    }
    const std::int32_t code = decode_operation(buffer_, op, event);
    is_over_ = is_over_ || event.event_type == vantu_orvanta_event_disconnected;
    return code;
}

std::int32_t connection::apply(const vantu_orvanta_event& event) {
    const std::int32_t code = devices_.apply(event);
    if (code != vantu_orvanta_success) {
        buffer_.reset();
    }
    return code;
}

std::int32_t connection::reject(reject_reason reason, rejection& rejected) {
    rejected.reason = reason;
    buffer_.reset();
    return vantu_orvanta_protocol_parse_failed;
}

} // namespace vantu::orvanta
