#include "simulator/faults/fault_datagrams.hpp"

#include "vantu/orvanta/communication/compose.hpp"

#include <algorithm>
#include <cstring>

namespace vantu::orvanta::simulator {
namespace {

using namespace communication;

// The operation whose record begins at a place; empty where there is none.
std::optional<operation_place> operation_at(std::span<const std::byte> datagram, std::size_t place) {
    if (place > datagram.size() || datagram.size() - place < sizeof(proto::op)) {
        return std::nullopt;
    }
    proto::op record{};
    std::memcpy(&record, datagram.data() + place, sizeof record);
    if (record.magic != proto::op_magic) {
        return std::nullopt;
    }
    const std::size_t left = datagram.size() - place - sizeof record;
    return operation_place{place, record.code, record.tag, std::min<std::size_t>(record.length, left)};
}

template <std::uint8_t code>
datagram_bytes composed(std::uint8_t tag, const proto::body<code, direction::to_client>& body) {
    byte_buffer buffer(constants::mode_read | constants::mode_write);
    compose_datagram<code, direction::to_client>(buffer, tag, body);
    return {buffer.unread(), buffer.unread() + buffer.read_len()};
}

} // namespace

std::vector<operation_place> operations_in(std::span<const std::byte> datagram) {
    std::vector<operation_place> found;
    for (auto next = operation_at(datagram, sizeof(proto::header)); next.has_value();
         next = operation_at(datagram, next->end())) {
        found.push_back(*next);
    }
    return found;
}

std::optional<operation_place> find_operation_in(std::span<const std::byte> datagram,
                                                 std::optional<std::uint8_t> code) {
    auto next = operation_at(datagram, sizeof(proto::header));
    while (next.has_value() && code.has_value() && next->code != *code) {
        next = operation_at(datagram, next->end());
    }
    return next;
}

datagram_bytes refusal_of(std::uint8_t tag, std::uint32_t device_id, std::uint8_t status) {
    return composed<op_code::service_error>(tag, {device_id, {status}});
}

datagram_bytes idle_acknowledgement() {
    return composed<op_code::ack>(0, {});
}

datagram_bytes forged_datagram(std::uint32_t number) {
    constexpr std::uint32_t kinds = 3;
    constexpr std::uint16_t forged_short_id = 0x0BAD;
    switch (number % kinds) {
    case 0:
        return composed<op_code::device_added>(
            0, {forged_device_id, {vantu_orvanta_device_type_orvanta3, 0, forged_short_id, {}}});
    case 1:
        return composed<op_code::config_gravity_compensation_get>(0, {forged_device_id, {0, 0.0F}});
    default:
        return composed<op_code::disconnected>(0, {});
    }
}

} // namespace vantu::orvanta::simulator
