// The public records laid over bytes: byte n of each record below is n, so a field shows its offset.
#include "vantu/orvanta/communication/records.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>

namespace orvanta_tests {
namespace {

template <typename Record> Record over_rising_bytes() {
    std::array<std::uint8_t, sizeof(Record)> bytes{};
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<std::uint8_t>(i);
    }
    Record record;
    std::memcpy(&record, bytes.data(), bytes.size());
    return record;
}

std::uint32_t bits_of(const void* field) {
    std::uint32_t bits = 0;
    std::memcpy(&bits, field, sizeof bits);
    return bits;
}

TEST(event_record, has_310_bytes_in_four_fields) {
    const auto event = over_rising_bytes<vantu_orvanta_event>();
    EXPECT_EQ(sizeof event, 310U);
    EXPECT_EQ(std::uint32_t{event.event_type}, 0x03020100U);
    EXPECT_EQ(std::uint32_t{event.device_id}, 0x07060504U);
    EXPECT_EQ(event.tag, 8);
    EXPECT_EQ(sizeof event.payload, 301U);
    EXPECT_EQ(event.payload[0], 9);
    EXPECT_EQ(event.payload[300], 309 - 256);
}

TEST(device_record, has_78_bytes_shared_by_two_types) {
    const auto device = over_rising_bytes<vantu_orvanta_device>();
    EXPECT_EQ(sizeof device, 78U);
    EXPECT_EQ(std::uint64_t{device.update_count}, 0x0706050403020100U);
    EXPECT_EQ(device.device_type, 8);
    EXPECT_EQ(device.second_byte, 9);
    EXPECT_EQ(std::uint16_t{device.short_id}, 0x0B0A);
    EXPECT_EQ(device.uuid[0], 12);
    EXPECT_EQ(device.uuid[15], 27);
    EXPECT_EQ(device.information[0], 28);
    EXPECT_EQ(device.information[7], 35);
    EXPECT_EQ(device.detail.orvanta3.handedness, 36);
    EXPECT_EQ(device.detail.orvanta3.state_kind, 53);
    EXPECT_EQ(bits_of(&device.detail.orvanta3.cursor_state), 0x39383736U);
    EXPECT_EQ(device.detail.palmetron_state.first, 36);
    EXPECT_EQ(device.detail.palmetron_state.tail[7], 61);
}

TEST(reply_records, have_their_fields_in_wire_order) {
    const auto gravity = over_rising_bytes<vantu_orvanta_config_gravity_compensation>();
    EXPECT_EQ(sizeof gravity, 5U);
    EXPECT_EQ(gravity.enabled, 0);
    const float scaling_factor = gravity.scaling_factor;
    EXPECT_EQ(bits_of(&scaling_factor), 0x04030201U);

    const auto orientation = over_rising_bytes<vantu_orvanta_orientation>();
    const float parts[] = {orientation.r, orientation.x, orientation.y, orientation.z};
    EXPECT_EQ(bits_of(&parts[0]), 0x03020100U);
    EXPECT_EQ(bits_of(&parts[1]), 0x07060504U);
    EXPECT_EQ(bits_of(&parts[2]), 0x0B0A0908U);
    EXPECT_EQ(bits_of(&parts[3]), 0x0F0E0D0CU);

    const auto grip = over_rising_bytes<vantu_orvanta_palmetron_state>();
    EXPECT_EQ(sizeof grip, 26U);
    EXPECT_EQ(grip.first, 0);
    EXPECT_EQ(grip.block[0], 1);
    EXPECT_EQ(grip.block[15], 16);
    EXPECT_EQ(grip.tail_count, 17);
    EXPECT_EQ(grip.tail[0], 18);
    EXPECT_EQ(grip.tail[7], 25);

    const auto details = over_rising_bytes<vantu_orvanta_orvanta3_info>();
    EXPECT_EQ(details.information[7], 7);
    EXPECT_EQ(details.handedness, 8);
}

TEST(reply_records, have_their_sizes) {
    EXPECT_EQ(sizeof(vantu_orvanta_cursor_state), 24U);
    EXPECT_EQ(sizeof(vantu_orvanta_orientation), 16U);
    EXPECT_EQ(sizeof(vantu_orvanta_config_save), 1U);
    EXPECT_EQ(sizeof(vantu_orvanta_config_torque_scaling), 1U);
    EXPECT_EQ(sizeof(vantu_orvanta_config_handedness), 1U);
    EXPECT_EQ(sizeof(vantu_orvanta_status_motor_current), 12U);
    EXPECT_EQ(sizeof(vantu_orvanta_status_power_supply), 1U);
    EXPECT_EQ(sizeof(vantu_orvanta_error), 4U);
    EXPECT_EQ(sizeof(vantu_orvanta_palmetron_info), 8U);
    EXPECT_EQ(sizeof(vantu_orvanta_device_block), 16U);
    EXPECT_EQ(sizeof(vantu_orvanta_service_stream_a), 12U);
    EXPECT_EQ(sizeof(vantu_orvanta_service_stream_b), 48U);
    EXPECT_EQ(sizeof(vantu_orvanta_table_block_128), 128U);
    EXPECT_EQ(sizeof(vantu_orvanta_table_block_301), 301U);
}

} // namespace
} // namespace orvanta_tests
