// Event slots.
#include "app/event_slot.hpp"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <gtest/gtest.h>
#include <thread>

namespace {

using namespace vantu::orvanta::app;

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

} // namespace
