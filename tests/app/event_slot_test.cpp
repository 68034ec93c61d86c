// Event slots and the callbacks that fill them.
#include "app/event_capture.hpp"
#include "app/event_slot.hpp"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <gtest/gtest.h>
#include <mutex>
#include <thread>

namespace {

using namespace vantu::orvanta::app;
using vantu::orvanta::client;

struct pattern {
    std::uint8_t bytes[250];
};

pattern pattern_of(std::uint8_t value) {
    pattern result{};
    std::memset(result.bytes, value, sizeof(result.bytes));
    return result;
}

TEST(event_slot, reads_as_zeros_before_the_first_record) {
    const event_slot<pattern> slot;
    const pattern zeros{};
    const pattern seen = slot.load();
    EXPECT_EQ(0, std::memcmp(&zeros, &seen, sizeof(pattern)));
}

TEST(event_slot, holds_the_latest_record) {
    event_slot<pattern> slot;
    slot.store(pattern_of(1));
    slot.store(pattern_of(255));
    const pattern seen = slot.load();
    const pattern expected = pattern_of(255);
    EXPECT_EQ(0, std::memcmp(&expected, &seen, sizeof(pattern)));
}

TEST(event_slot, never_shows_parts_of_two_records) {
    event_slot<pattern> slot;
    std::atomic<bool> done{false};
    std::thread writer([&] {
        // Eight reads to let the reader through, then the next record.
        for (std::uint32_t i = 0; !done; ++i) {
            if (i % 8 == 0) {
                slot.store(pattern_of(static_cast<std::uint8_t>(i / 8)));
            } else {
                (void)slot.load();
            }
        }
        slot.store(pattern_of(200));
    });
    int changes = 0;
    int idle = 0;
    pattern last = slot.load();
    bool whole = true;
    while (changes < 500 && whole) {
        const pattern seen = slot.load();
        whole = std::all_of(std::begin(seen.bytes), std::end(seen.bytes),
                            [&](std::uint8_t byte) { return byte == seen.bytes[0]; });
        if (seen.bytes[0] != last.bytes[0]) {
            ++changes;
        } else if (++idle % 1000 == 0) { // where both threads share a processor
            std::this_thread::yield();
        }
        last = seen;
    }
    done = true;
    writer.join();
    EXPECT_TRUE(whole);
    EXPECT_EQ(200, slot.load().bytes[0]);
}

TEST(event_fn, copies_the_whole_record_into_its_slot) {
    event_slot<vantu_orvanta_orientation> slot;
    std::mutex app_mutex;
    client service{{}};
    event_fn(&slot, app_mutex)(service, 5, {0.25F, -1.0F, 2.0F, 3.5F});
    const vantu_orvanta_orientation seen = slot.load();
    EXPECT_EQ(0.25F, float{seen.r});
    EXPECT_EQ(-1.0F, float{seen.x});
    EXPECT_EQ(2.0F, float{seen.y});
    EXPECT_EQ(3.5F, float{seen.z});
}

TEST(event_fn, keeps_the_second_of_two_events) {
    event_slot<vantu_orvanta_config_gravity_compensation> slot;
    std::mutex app_mutex;
    client service{{}};
    const auto capture = event_fn(&slot, app_mutex);
    capture(service, 5, {1, 0.5F});
    capture(service, 5, {0, 0.75F});
    EXPECT_EQ(0, slot.load().enabled);
    EXPECT_EQ(0.75F, float{slot.load().scaling_factor});
}

TEST(event_fn, takes_events_of_any_device) {
    event_slot<vantu_orvanta_config_torque_scaling> slot;
    std::mutex app_mutex;
    client service{{}};
    const auto capture = event_fn(&slot, app_mutex);
    capture(service, 5, {1});
    capture(service, 6, {3});
    EXPECT_EQ(3, slot.load().enabled);
}

TEST(event_fn, waits_for_the_mutex_that_readers_do_not_need) {
    event_slot<vantu_orvanta_status_power_supply> slot;
    std::mutex app_mutex;
    client service{{}};
    const auto capture = event_fn(&slot, app_mutex);
    std::unique_lock held(app_mutex);
    std::atomic<bool> entered{false};
    std::thread polling([&] {
        entered = true;
        capture(service, 5, {9});
    });
    while (!entered) {
        std::this_thread::yield();
    }
    EXPECT_EQ(0, slot.load().state);
    held.unlock();
    polling.join();
    EXPECT_EQ(9, slot.load().state);
}

} // namespace
