#include "core/operation_decoder.hpp"

#include "core/service_codes.hpp"
#include "vantu/orvanta/communication/bodies.hpp"
#include "vantu/orvanta/error_codes.h"

#include <array>
#include <cstring>
#include <type_traits>
#include <utility>

namespace vantu::orvanta {
namespace {

using namespace communication;

// How a body's bytes come into the event: a device id first and a record after it, or a block whole.
template <typename Record> void fill_event(const proto::addressed<Record>& body, vantu_orvanta_event& event) {
    event.device_id = body.device_id;
    static_assert(sizeof(Record) <= sizeof(event.payload));
    std::memcpy(event.payload, &body.record, sizeof(Record));
}

void fill_event(const proto::device_body& body, vantu_orvanta_event& event) {
    event.device_id = body.device_id;
}

template <typename Block> void fill_event(const Block& block, vantu_orvanta_event& event) {
    static_assert(sizeof(Block) <= sizeof(event.payload));
    std::memcpy(event.payload, &block, sizeof(Block));
}

// Does what an operation needs beyond filling the event; most need nothing.
template <std::uint8_t code, typename Body>
[[nodiscard]] std::int32_t finish(const Body& body, [[maybe_unused]] byte_buffer& buffer,
                                  [[maybe_unused]] vantu_orvanta_event& event) {
    if constexpr (code == op_code::palmetron_state) {
        const std::uint8_t tail = body.record.tail_count;
        if (buffer.read_len() < tail) {
            buffer.reset();
            return vantu_orvanta_protocol_parse_failed;
        }
        static_assert(sizeof(body.record) + 255 <= sizeof(event.payload));
        std::memcpy(event.payload + sizeof(body.record), buffer.unread(), tail);
        buffer.skip_read(tail);
    } else if constexpr (code == op_code::config_handedness) {
        // A handedness of 0 is no answer: refused on purpose after the event was filled.
        if (body.record.handedness == vantu_orvanta_handedness_none) {
            return vantu_orvanta_invalid_argument;
        }
    }
    return vantu_orvanta_success;
}

using decode_function = std::int32_t (*)(byte_buffer&, vantu_orvanta_event&);

template <std::uint8_t code> std::int32_t decode_body(byte_buffer& buffer, vantu_orvanta_event& event) {
    using body_type = proto::body<code, direction::to_client>;
    if constexpr (code == op_code::ack) {
        // Nobody waits for an acknowledgement of tag 0: no event.
        event.event_type = event.tag != 0 ? vantu_orvanta_event_ack : vantu_orvanta_event_none;
        return vantu_orvanta_success;
    } else if constexpr (code == op_code::service_error) {
        const auto& body = buffer.read<body_type>();
        fill_event(
            proto::addressed<vantu_orvanta_error>{body.device_id,
                                                  {client_code_from_service_status(body.record.status)}},
            event);
        return vantu_orvanta_success;
    } else if constexpr (std::is_same_v<body_type, proto::empty_body>) {
        return vantu_orvanta_success;
    } else {
        const auto& body = buffer.read<body_type>();
        fill_event(body, event);
        return finish<code>(body, buffer, event);
    }
}

struct decoder {
    decode_function decode{nullptr}; // null: the client receives no such operation
    std::uint16_t body_size{0};
    std::uint16_t event_type{0};
    std::uint8_t tag_mask{0}; // 0xFF where the event copies the tag
};

template <std::size_t row> consteval void add_decoder(std::array<decoder, 256>& table) {
    constexpr const operation& operation = operations[row];
    if constexpr (operation.way == direction::to_client && operation.code != op_code::connected) {
        table[operation.code] = {decode_body<operation.code>, operation.body_size,
                                 static_cast<std::uint16_t>(operation.event_type),
                                 static_cast<std::uint8_t>(operation.tag == tag_rule::copied ? 0xFF : 0)};
    }
}

template <std::size_t... rows>
consteval std::array<decoder, 256> make_decoders(std::index_sequence<rows...>) {
    std::array<decoder, 256> table{};
    (add_decoder<rows>(table), ...);
    return table;
}

constexpr std::array<decoder, 256> decoders = make_decoders(std::make_index_sequence<operations.size()>{});

std::int32_t skip_unknown(byte_buffer& buffer, std::uint16_t length) {
    if (length <= buffer.read_len()) {
        buffer.skip_read(length);
    } else {
        buffer.reset();
    }
    return vantu_orvanta_protocol_parse_failed;
}

} // namespace

std::int32_t decode_operation(byte_buffer& buffer, const proto::op& op, vantu_orvanta_event& event) {
    const decoder& row = decoders[op.code];
    if (row.decode == nullptr) {
        return skip_unknown(buffer, op.length);
    }
    if (buffer.read_len() < row.body_size) {
        buffer.reset();
        return vantu_orvanta_protocol_parse_failed;
    }
    event.event_type = row.event_type;
    event.tag = op.tag & row.tag_mask;
    return row.decode(buffer, event);
}

} // namespace vantu::orvanta
