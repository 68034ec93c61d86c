#include "support/service_operations.hpp"

#include "vantu/orvanta/communication/records.h"

namespace orvanta_tests {
namespace {

// Made on demand: rows are asked for before main.
const bytes& device_id() {
    static const bytes id{0xD4, 0xC3, 0xB2, 0xA1};
    return id;
}

bytes of_device(const bytes& rest) {
    return join({device_id(), rest});
}

} // namespace

bytes device_listed(std::uint32_t id, std::uint8_t type) {
    return join({{0xFF, 0x10, 0x18, 0x00, 0x00}, u32(id), {type, 7, 0xEF, 0xBE}, counting(0x60, 16)});
}

bytes received_operation::event(std::uint8_t tag) const {
    if (code == 2 && tag == 0) {
        return filled(310, 0);
    }
    const std::uint8_t event_tag = copies_tag ? tag : std::uint8_t{0};
    return join({u32(event_type), event_device, {event_tag}, payload, filled(301 - payload.size(), 0)});
}

const std::vector<received_operation>& received_operations() {
    static const bytes listed_orvanta3 = device_listed(0xA1B2C3D4, 1);
    static const bytes listed_palmetron = device_listed(0xA1B2C3D4, 2);
    static const bytes details = join({counting(0x30, 8), {2}});
    static const bytes grip = join({{0x5A}, counting(0x10, 16), {3, 0xE1, 0xE2, 0xE3}});
    static const bytes quaternion{0x00, 0x00, 0x80, 0x3F, 0x00, 0x00, 0x00, 0x3F,
                                  0x00, 0x00, 0x80, 0xBE, 0x00, 0x00, 0x00, 0x40}; // 1, 0.5, -0.25, 2
    static const bytes compensation{1, 0x00, 0x00, 0x40, 0x3F};                    // on, 0.75
    static const bytes currents{0x00, 0x00, 0x80, 0x3F, 0x00, 0x00,
                                0x00, 0x40, 0x00, 0x00, 0x40, 0x40}; // 1, 2, 3
    static const bytes& id = device_id();
    static const bytes no_id = filled(4, 0);
    // clang-format off
    static const std::vector<received_operation> rows{
        {2, "ack", {}, vantu_orvanta_event_ack, true, no_id, {}, {}},
        {6, "disconnected", {}, vantu_orvanta_event_disconnected, false, no_id, {}, {}},
        {16, "device_added", of_device(counting(0x01, 20)), vantu_orvanta_event_device_added, false, id, counting(0x01, 20), {}},
        {17, "device_removed", id, vantu_orvanta_event_device_removed, false, id, {}, {}},
        {19, "device_opened", id, vantu_orvanta_event_device_opened, true, id, {}, {}},
        {21, "device_closed", id, vantu_orvanta_event_device_closed, true, id, {}, {}},
        {22, "device_block_reply", of_device(counting(0x20, 16)), vantu_orvanta_event_device_block, true, id, counting(0x20, 16), {}},
        {23, "device_info_orvanta3", of_device(details), vantu_orvanta_event_orvanta3_info, false, id, details, listed_orvanta3},
        {24, "device_info_palmetron", of_device(counting(0x30, 8)), vantu_orvanta_event_palmetron_info, false, id, counting(0x30, 8), listed_palmetron},
        {33, "cursor_state", of_device(counting(0x40, 24)), vantu_orvanta_event_cursor_state, false, id, counting(0x40, 24), {}},
        {37, "cursor_state_b", of_device(counting(0x50, 24)), vantu_orvanta_event_cursor_state_b, false, id, counting(0x50, 24), {}},
        {40, "palmetron_state", of_device(grip), vantu_orvanta_event_palmetron_state, false, id, grip, {}},
        {47, "orientation_get", of_device(quaternion), vantu_orvanta_event_orientation, true, id, quaternion, {}},
        {64, "config_save", of_device({1}), vantu_orvanta_event_config_save, true, id, {1}, {}},
        {66, "config_gravity_compensation_get", of_device(compensation), vantu_orvanta_event_config_gravity_compensation, true, id, compensation, {}},
        {68, "config_torque_scaling_get", of_device({1}), vantu_orvanta_event_config_torque_scaling, true, id, {1}, {}},
        {70, "config_handedness", of_device({2}), vantu_orvanta_event_config_handedness, true, id, {2}, {}},
        {80, "status_motor_current", of_device(currents), vantu_orvanta_event_status_motor_current, true, id, currents, {}},
        {81, "status_power_supply", of_device({3}), vantu_orvanta_event_status_power_supply, true, id, {3}, {}},
        {96, "table_block_128", counting(0x01, 128), vantu_orvanta_event_table_block_128, true, no_id, counting(0x01, 128), {}},
        {97, "table_block_301", counting(0x01, 301), vantu_orvanta_event_table_block_301, true, no_id, counting(0x01, 301), {}},
        {224, "service_stream_a", counting(0x60, 12), vantu_orvanta_event_service_stream_a, false, no_id, counting(0x60, 12), {}},
        {225, "service_stream_b", of_device(counting(0x70, 48)), vantu_orvanta_event_service_stream_b, false, id, counting(0x70, 48), {}},
        {240, "service_error", of_device({0xB1}), vantu_orvanta_event_error, true, id, {0xB1, 0, 0, 0}, {}},
    };
    // clang-format on
    return rows;
}

} // namespace orvanta_tests
