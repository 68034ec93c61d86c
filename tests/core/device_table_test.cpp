// The device table, event by event; records are compared byte by byte.
#include "core/device_table.hpp"

#include "support/service_operations.hpp"
#include "vantu/orvanta/error_codes.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <utility>

namespace orvanta_tests {
namespace {

using vantu::orvanta::device_table;

class the_device_table : public testing::Test {
  protected:
    std::int32_t apply(std::uint32_t type, const bytes& payload = {}, std::uint32_t device = 5) {
        vantu_orvanta_event event{};
        event.event_type = type;
        event.device_id = device;
        std::copy(payload.begin(), payload.end(), event.payload);
        return table.apply(event);
    }

    void list(std::uint8_t type, std::uint32_t device = 5) {
        EXPECT_EQ(apply(vantu_orvanta_event_device_added, listing(type), device), vantu_orvanta_success);
    }

    static bytes listing(std::uint8_t type) { return join({{type, 7, 0xEF, 0xBE}, counting(0x60, 16)}); }

    // The record of device 5.
    [[nodiscard]] std::string stored() const {
        vantu_orvanta_device device;
        std::memset(&device, 0xAA, sizeof(device));
        EXPECT_TRUE(table.copy_device(5, device));
        return hex(bytes_of(device));
    }

    [[nodiscard]] bool has(std::uint32_t id) const {
        vantu_orvanta_device device{};
        return table.copy_device(id, device);
    }

    device_table table;
};

TEST_F(the_device_table, is_empty_at_first) {
    std::uint32_t id = 99;
    std::size_t count = 1;
    EXPECT_TRUE(table.copy_ids(&id, count));
    EXPECT_EQ(count, 0U);
    EXPECT_EQ(id, 99U);
    EXPECT_FALSE(has(5));
}

TEST_F(the_device_table, holds_a_listing_with_an_update_count_of_1) {
    list(1);
    EXPECT_EQ(stored(), hex(join({u64(1), listing(1), filled(50, 0)})));
}

TEST_F(the_device_table, starts_a_device_afresh_when_it_is_listed_again) {
    list(1);
    EXPECT_EQ(apply(vantu_orvanta_event_cursor_state, counting(0x70, 24)), vantu_orvanta_success);
    list(2);
    EXPECT_EQ(stored(), hex(join({u64(1), listing(2), filled(50, 0)})));
}

TEST_F(the_device_table, stores_details_without_counting_them) {
    list(1);
    EXPECT_EQ(apply(vantu_orvanta_event_orvanta3_info, join({counting(0x30, 8), {2}})),
              vantu_orvanta_success);
    EXPECT_EQ(stored(), hex(join({u64(1), listing(1), counting(0x30, 8), {2}, filled(41, 0)})));
    list(2);
    EXPECT_EQ(apply(vantu_orvanta_event_palmetron_info, counting(0x40, 8)), vantu_orvanta_success);
    EXPECT_EQ(stored(), hex(join({u64(1), listing(2), counting(0x40, 8), filled(42, 0)})));
}

TEST_F(the_device_table, refuses_details_of_a_device_that_is_not_listed_with_that_type) {
    EXPECT_EQ(apply(vantu_orvanta_event_orvanta3_info), vantu_orvanta_no_matching_device);
    EXPECT_EQ(apply(vantu_orvanta_event_palmetron_info), vantu_orvanta_no_matching_device);
    EXPECT_FALSE(has(5));
    list(1);
    EXPECT_EQ(apply(vantu_orvanta_event_palmetron_info, filled(8, 1)), vantu_orvanta_no_matching_device);
    EXPECT_EQ(stored(), hex(join({u64(1), listing(1), filled(50, 0)})));
    list(2);
    EXPECT_EQ(apply(vantu_orvanta_event_orvanta3_info, filled(9, 1)), vantu_orvanta_no_matching_device);
    EXPECT_EQ(stored(), hex(join({u64(1), listing(2), filled(50, 0)})));
}

TEST_F(the_device_table, stores_cursor_states_and_their_kind_and_counts_them) {
    list(1);
    EXPECT_EQ(apply(vantu_orvanta_event_cursor_state, counting(0x70, 24)), vantu_orvanta_success);
    EXPECT_EQ(stored(), hex(join({u64(2), listing(1), filled(25, 0), {1}, counting(0x70, 24)})));
    EXPECT_EQ(apply(vantu_orvanta_event_cursor_state_b, counting(0x90, 24)), vantu_orvanta_success);
    EXPECT_EQ(stored(), hex(join({u64(3), listing(1), filled(25, 0), {2}, counting(0x90, 24)})));
}

TEST_F(the_device_table, makes_an_entry_without_a_type_for_a_state_of_an_unlisted_device) {
    EXPECT_EQ(apply(vantu_orvanta_event_cursor_state_b, counting(0x70, 24)), vantu_orvanta_success);
    EXPECT_EQ(stored(), hex(join({u64(1), filled(45, 0), {2}, counting(0x70, 24)})));
}

TEST_F(the_device_table, stores_26_bytes_of_the_grip_state_of_a_palmetron) {
    const bytes grip = join({{0x5A}, counting(0x10, 16), {20}, counting(0xE0, 20)});
    list(2);
    EXPECT_EQ(apply(vantu_orvanta_event_palmetron_state, grip), vantu_orvanta_success);
    EXPECT_EQ(stored(), hex(join({u64(2), listing(2), filled(8, 0), bytes(grip.begin(), grip.begin() + 26),
                                  filled(16, 0)})));
}

TEST_F(the_device_table, only_counts_a_grip_state_of_another_device) {
    list(1);
    EXPECT_EQ(apply(vantu_orvanta_event_palmetron_state, filled(26, 1)), vantu_orvanta_success);
    EXPECT_EQ(stored(), hex(join({u64(2), listing(1), filled(50, 0)})));
}

TEST_F(the_device_table, makes_no_entry_for_a_grip_state) {
    EXPECT_EQ(apply(vantu_orvanta_event_palmetron_state, filled(26, 1)), vantu_orvanta_success);
    EXPECT_FALSE(has(5));
}

TEST_F(the_device_table, does_not_change_with_events_that_tell_of_no_device) {
    list(1);
    const std::string before = stored();
    for (const std::uint32_t type :
         {vantu_orvanta_event_none, vantu_orvanta_event_ack, vantu_orvanta_event_device_opened,
          vantu_orvanta_event_config_save, vantu_orvanta_event_error, vantu_orvanta_event_table_block_301}) {
        EXPECT_EQ(apply(type, filled(301, 1)), vantu_orvanta_success);
    }
    EXPECT_EQ(stored(), before);
}

TEST_F(the_device_table, forgets_a_removed_device_and_one_that_is_not_there) {
    list(1);
    EXPECT_EQ(apply(vantu_orvanta_event_cursor_state, filled(24, 1)), vantu_orvanta_success);
    EXPECT_EQ(apply(vantu_orvanta_event_device_removed), vantu_orvanta_success);
    EXPECT_FALSE(has(5));
    EXPECT_EQ(apply(vantu_orvanta_event_device_removed), vantu_orvanta_success);
    EXPECT_EQ(apply(vantu_orvanta_event_cursor_state, counting(0x70, 24)), vantu_orvanta_success);
    EXPECT_EQ(stored(), hex(join({u64(1), filled(45, 0), {1}, counting(0x70, 24)})));
}

TEST_F(the_device_table, tells_states_of_two_devices_apart) {
    list(1, 5);
    list(1, 6);
    for (std::uint8_t round = 1; round <= 3; ++round) {
        EXPECT_EQ(apply(vantu_orvanta_event_cursor_state, filled(24, round), 5), vantu_orvanta_success);
        EXPECT_EQ(apply(vantu_orvanta_event_cursor_state, filled(24, 0xEE), 6), vantu_orvanta_success);
    }
    EXPECT_EQ(stored(), hex(join({u64(4), listing(1), filled(25, 0), {1}, filled(24, 3)})));
}

TEST_F(the_device_table, keeps_its_records_apart_from_those_that_it_is_swapped_with) {
    list(1);
    EXPECT_EQ(apply(vantu_orvanta_event_cursor_state, filled(24, 1)), vantu_orvanta_success);
    device_table moved(std::move(table));
    table = device_table();
    EXPECT_FALSE(has(5));
    EXPECT_EQ(apply(vantu_orvanta_event_cursor_state, filled(24, 2)), vantu_orvanta_success);
    vantu_orvanta_device device{};
    ASSERT_TRUE(moved.copy_device(5, device));
    EXPECT_EQ(+device.update_count, 2U);
    EXPECT_EQ(stored(), hex(join({u64(1), filled(45, 0), {1}, filled(24, 2)})));
    table = std::move(moved);
    EXPECT_EQ(stored(), hex(join({u64(2), listing(1), filled(25, 0), {1}, filled(24, 1)})));
}

} // namespace
} // namespace orvanta_tests
