#include "core/handshake.hpp"

#include "core/operation_decoder.hpp"
#include "vantu/orvanta/common/text_field.hpp"
#include "vantu/orvanta/communication/compose.hpp"
#include "vantu/orvanta/communication/service_status.hpp"
#include "vantu/orvanta/error_codes.h"

namespace vantu::orvanta {
namespace {

using namespace communication;

std::int32_t refusal(byte_buffer& reply) {
    // Read without a check of its own, unlike every other body: a cut-off refusal ends the process.
    const auto& body = reply.read<proto::body<op_code::service_error, direction::to_client>>();
    switch (static_cast<service_status>(body.record.status)) {
    case service_status::another_client_connected:
        return vantu_orvanta_another_client_connected;
    case service_status::buffer_full_or_empty:
        return vantu_orvanta_buffer_full_or_empty;
    default:
        return vantu_orvanta_protocol_parse_failed;
    }
}

std::int32_t list_device(byte_buffer& datagram, const proto::op& op, device_table& devices) {
    vantu_orvanta_event scratch{};
    const std::int32_t code = decode_operation(datagram, op, scratch);
    return code == vantu_orvanta_success ? devices.apply(scratch) : code;
}

} // namespace

void compose_connect(byte_buffer& datagram, const introduction& client, std::uint32_t process_id,
                     std::string_view version_text) {
    proto::connect_body body{};
    body.value_a = client.value_a;
    body.value_b = client.value_b;
    body.keep_alive_ns = client.keep_alive_ns;
    body.process_id = process_id;
    assign_text(body.client_name, client.name);
    assign_text(body.version_text, version_text.substr(0, sizeof(body.version_text) - 1));
    compose_datagram<op_code::connect, direction::to_service>(datagram, 0, body);
}

std::int32_t read_handshake_reply(byte_buffer& datagram, handshake_reply& reply) {
    if (!datagram.can_read<proto::header>()) {
        return vantu_orvanta_protocol_parse_failed;
    }
    const auto& header = datagram.read<proto::header>();
    if (header.magic != proto::header_magic || header.version != proto::protocol_version) {
        return vantu_orvanta_protocol_parse_failed;
    }
    while (datagram.can_read<proto::op>()) {
        const auto& op = datagram.read<proto::op>();
        if (op.magic != proto::op_magic) {
            return vantu_orvanta_protocol_parse_failed;
        }
        switch (op.code) {
        case op_code::connected:
            // Read without a check of its own, like the refusal.
            reply.client_id = datagram.read<proto::connected_body>().client_id;
            return vantu_orvanta_success;
        case op_code::service_error:
            return refusal(datagram);
        case op_code::device_added:
        case op_code::device_info_orvanta3:
        case op_code::device_info_palmetron:
            if (const std::int32_t code = list_device(datagram, op, reply.devices); code != 0) {
                return code;
            }
            break;
        default:
            reply.rejected = {reject_reason::handshake_operation, op.code};
            return vantu_orvanta_protocol_parse_failed;
        }
    }
    return vantu_orvanta_protocol_parse_failed;
}

} // namespace vantu::orvanta
