#include "simulator/faults/fault_datagrams.hpp"

#include "vantu/orvanta/communication/compose.hpp"

namespace vantu::orvanta::simulator {
namespace {

using namespace communication;

template <std::uint8_t code>
datagram_bytes composed(std::uint8_t tag, const proto::body<code, direction::to_client>& body) {
    byte_buffer buffer(constants::mode_read | constants::mode_write);
    compose_datagram<code, direction::to_client>(buffer, tag, body);
    return {buffer.unread(), buffer.unread() + buffer.read_len()};
}

} // namespace

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
