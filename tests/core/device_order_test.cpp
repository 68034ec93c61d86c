// The order of the device table: that of announcement.
#include "core/device_table.hpp"
#include "vantu/orvanta/error_codes.h"

#include <cstdint>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <numeric>
#include <vector>

namespace orvanta_tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class the_order_of_devices : public testing::Test {
  protected:
    void apply(std::uint32_t type, std::uint32_t device) {
        vantu_orvanta_event event{};
        event.event_type = type;
        event.device_id = device;
        EXPECT_EQ(table.apply(event), vantu_orvanta_success);
    }
    void announce(std::uint32_t device) { apply(vantu_orvanta_event_device_added, device); }

    [[nodiscard]] std::vector<std::uint32_t> ids() const {
        std::vector<std::uint32_t> all(1000);
        std::size_t count = all.size();
        EXPECT_TRUE(table.copy_ids(all.data(), count));
        all.resize(count);
        return all;
    }

    vantu::orvanta::device_table table;
};

TEST_F(the_order_of_devices, is_that_of_their_announcement) {
    for (const std::uint32_t device : {3003U, 3002U, 0xFFFFFFFFU, 3001U, 0x1A2BU, 0xFFU, 1U}) {
        announce(device);
    }
    EXPECT_THAT(ids(), ElementsAre(3003U, 3002U, 0xFFFFFFFFU, 3001U, 0x1A2BU, 0xFFU, 1U));
}

TEST_F(the_order_of_devices, stays_when_a_device_is_announced_again) {
    for (const std::uint32_t device : {3U, 2U, 1U, 3U, 2U}) {
        announce(device);
    }
    EXPECT_THAT(ids(), ElementsAre(3U, 2U, 1U));
}

TEST_F(the_order_of_devices, closes_the_gap_of_a_removed_device) {
    for (const std::uint32_t device : {3U, 2U, 1U}) {
        announce(device);
    }
    apply(vantu_orvanta_event_device_removed, 2);
    EXPECT_THAT(ids(), ElementsAre(3U, 1U));
    apply(vantu_orvanta_event_device_removed, 3);
    apply(vantu_orvanta_event_device_removed, 3);
    EXPECT_THAT(ids(), ElementsAre(1U));
    apply(vantu_orvanta_event_device_removed, 1);
    EXPECT_THAT(ids(), IsEmpty());
}

TEST_F(the_order_of_devices, has_a_device_last_that_was_removed_and_announced_again) {
    for (const std::uint32_t device : {3U, 2U, 1U}) {
        announce(device);
    }
    apply(vantu_orvanta_event_device_removed, 3);
    announce(3);
    EXPECT_THAT(ids(), ElementsAre(2U, 1U, 3U));
}

TEST_F(the_order_of_devices, has_an_unlisted_device_last_once_a_state_of_it_has_come) {
    announce(9);
    apply(vantu_orvanta_event_cursor_state, 7);
    apply(vantu_orvanta_event_cursor_state_b, 8);
    announce(6);
    apply(vantu_orvanta_event_palmetron_state, 5);
    EXPECT_THAT(ids(), ElementsAre(9U, 7U, 8U, 6U));
    announce(7);
    EXPECT_THAT(ids(), ElementsAre(9U, 7U, 8U, 6U));
}

TEST_F(the_order_of_devices, is_kept_as_far_as_there_is_room) {
    for (const std::uint32_t device : {3U, 2U, 1U}) {
        announce(device);
    }
    std::vector<std::uint32_t> some(3, 99);
    std::size_t count = 2;
    EXPECT_FALSE(table.copy_ids(some.data(), count));
    EXPECT_EQ(count, 2U);
    EXPECT_THAT(some, ElementsAre(3U, 2U, 99U));
    count = 0;
    EXPECT_FALSE(table.copy_ids(some.data(), count));
    EXPECT_EQ(count, 0U);
}

TEST_F(the_order_of_devices, holds_for_256_devices_and_room_for_255_is_too_little) {
    std::vector<std::uint32_t> announced(256);
    std::iota(announced.rbegin(), announced.rend(), 1000);
    for (const std::uint32_t device : announced) {
        announce(device);
    }
    EXPECT_EQ(ids(), announced);
    std::vector<std::uint32_t> found(257, 99);
    std::size_t count = 256;
    EXPECT_TRUE(table.copy_ids(found.data(), count));
    EXPECT_EQ(count, 256U);
    EXPECT_EQ(std::vector<std::uint32_t>(found.begin(), found.begin() + 256), announced);
    EXPECT_EQ(found[256], 99U);
    count = 255;
    EXPECT_FALSE(table.copy_ids(found.data(), count));
    EXPECT_EQ(count, 255U);
}

} // namespace
} // namespace orvanta_tests
