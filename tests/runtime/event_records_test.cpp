// The records that are copied out of events. The compiler holds that each event with a record has its getter.
#include "support/bytes.hpp"
#include "vantu/orvanta/orvanta.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace orvanta_tests {
namespace {

// An event whose payload counts up from 1.
vantu_orvanta_event event_of(std::uint32_t event_type) {
    vantu_orvanta_event event{};
    event.event_type = event_type;
    const bytes payload = counting(1, sizeof(event.payload));
    std::memcpy(event.payload, payload.data(), payload.size());
    return event;
}

struct getter {
    std::uint32_t event_type;
    // The code, and the record's bytes, which are 0xEE before the call.
    std::function<std::int32_t(const vantu_orvanta_event*, bytes&)> get;
    std::function<std::int32_t(const vantu_orvanta_event*)> get_into_null;
    bytes wanted; // of an event of that type
};

template <typename Record>
getter row(std::uint32_t event_type, std::int32_t (*function)(const vantu_orvanta_event*, Record*),
           std::size_t size) {
    return {event_type,
            [function](const vantu_orvanta_event* event, bytes& copied) {
                Record record;
                std::memset(&record, 0xEE, sizeof(record));
                const std::int32_t code = function(event, &record);
                copied.resize(sizeof(record));
                std::memcpy(copied.data(), &record, sizeof(record));
                return code;
            },
            [function](const vantu_orvanta_event* event) { return function(event, nullptr); },
            counting(1, size)};
}

std::vector<getter> getters() {
    std::vector<getter> rows{
        row(vantu_orvanta_event_device_added, vantu_orvanta_event_get_device_added, 0),
        row(vantu_orvanta_event_orvanta3_info, vantu_orvanta_event_get_orvanta3_info, 9),
        row(vantu_orvanta_event_palmetron_info, vantu_orvanta_event_get_palmetron_info, 8),
        row(vantu_orvanta_event_device_block, vantu_orvanta_event_get_device_block, 16),
        row(vantu_orvanta_event_cursor_state, vantu_orvanta_event_get_cursor_state, 24),
        row(vantu_orvanta_event_cursor_state_b, vantu_orvanta_event_get_cursor_state_b, 24),
        row(vantu_orvanta_event_palmetron_state, vantu_orvanta_event_get_palmetron_state, 26),
        row(vantu_orvanta_event_orientation, vantu_orvanta_event_get_orientation, 16),
        row(vantu_orvanta_event_config_save, vantu_orvanta_event_get_config_save, 1),
        row(vantu_orvanta_event_config_gravity_compensation,
            vantu_orvanta_event_get_config_gravity_compensation, 5),
        row(vantu_orvanta_event_config_torque_scaling, vantu_orvanta_event_get_config_torque_scaling, 1),
        row(vantu_orvanta_event_config_handedness, vantu_orvanta_event_get_config_handedness, 1),
        row(vantu_orvanta_event_status_motor_current, vantu_orvanta_event_get_status_motor_current, 12),
        row(vantu_orvanta_event_status_power_supply, vantu_orvanta_event_get_status_power_supply, 1),
        row(vantu_orvanta_event_service_stream_a, vantu_orvanta_event_get_service_stream_a, 12),
        row(vantu_orvanta_event_service_stream_b, vantu_orvanta_event_get_service_stream_b, 48),
        row(vantu_orvanta_event_table_block_128, vantu_orvanta_event_get_table_block_128, 128),
        row(vantu_orvanta_event_table_block_301, vantu_orvanta_event_get_table_block_301, 301),
        row(vantu_orvanta_event_error, vantu_orvanta_event_get_error, 4)};
    // The listing is bytes 8 to 27 of the device's record.
    rows.front().wanted = join({filled(8, 0), counting(1, 20), filled(50, 0)});
    return rows;
}

TEST(event_records, are_copied_from_events_of_their_type) {
    for (const getter& each : getters()) {
        const vantu_orvanta_event event = event_of(each.event_type);
        bytes record;
        EXPECT_EQ(each.get(&event, record), vantu_orvanta_success) << each.event_type;
        EXPECT_EQ(hex(record), hex(each.wanted)) << each.event_type;
    }
}

TEST(event_records, are_left_alone_by_events_of_every_other_type) {
    for (const getter& each : getters()) {
        for (std::uint32_t other = 0; other < 600; ++other) {
            if (other == each.event_type) {
                continue;
            }
            const vantu_orvanta_event event = event_of(other);
            bytes record;
            ASSERT_EQ(each.get(&event, record), vantu_orvanta_invalid_argument) << each.event_type;
            ASSERT_EQ(hex(record), hex(filled(record.size(), 0xEE))) << each.event_type;
        }
    }
}

TEST(event_records, are_refused_with_a_null) {
    for (const getter& each : getters()) {
        const vantu_orvanta_event event = event_of(each.event_type);
        bytes record;
        EXPECT_EQ(each.get(nullptr, record), vantu_orvanta_invalid_argument) << each.event_type;
        EXPECT_EQ(hex(record), hex(filled(record.size(), 0xEE))) << each.event_type;
        EXPECT_EQ(each.get_into_null(&event), vantu_orvanta_invalid_argument) << each.event_type;
    }
}

using tail_bytes = std::array<std::uint8_t, VANTU_ORVANTA_PALMETRON_TAIL_SIZE>;

TEST(palmetron_tail, is_copied_whole_for_every_length) {
    for (unsigned count = 0; count <= 255; ++count) {
        vantu_orvanta_event event = event_of(vantu_orvanta_event_palmetron_state);
        event.payload[17] = static_cast<std::uint8_t>(count);
        tail_bytes tail{};
        tail.fill(0xEE);
        std::size_t size = 1000;
        ASSERT_EQ(vantu_orvanta_event_get_palmetron_tail(&event, tail.data(), &size), vantu_orvanta_success);
        ASSERT_EQ(size, count);
        ASSERT_EQ(hex(bytes(tail.begin(), tail.end())),
                  hex(join({counting(19, count), filled(255 - count, 0xEE)})));
    }
}

TEST(palmetron_tail, is_refused_with_a_null_or_another_event) {
    vantu_orvanta_event event = event_of(vantu_orvanta_event_palmetron_state);
    tail_bytes tail{};
    std::size_t size = 1000;
    EXPECT_EQ(vantu_orvanta_event_get_palmetron_tail(nullptr, tail.data(), &size),
              vantu_orvanta_invalid_argument);
    EXPECT_EQ(vantu_orvanta_event_get_palmetron_tail(&event, nullptr, &size), vantu_orvanta_invalid_argument);
    EXPECT_EQ(vantu_orvanta_event_get_palmetron_tail(&event, tail.data(), nullptr),
              vantu_orvanta_invalid_argument);
    event.event_type = vantu_orvanta_event_cursor_state;
    EXPECT_EQ(vantu_orvanta_event_get_palmetron_tail(&event, tail.data(), &size),
              vantu_orvanta_invalid_argument);
    EXPECT_EQ(size, 1000U);
    EXPECT_EQ(hex(bytes(tail.begin(), tail.end())), hex(filled(255, 0)));
}

} // namespace
} // namespace orvanta_tests
