// The times of a connection, to the nanosecond.
#include "core/timing.hpp"

#include <cstdint>
#include <gtest/gtest.h>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta;

constexpr std::int64_t some_time_ns = 7'000'000'000'123'456;

TEST(a_keep_alive, is_due_one_second_after_a_send) {
    EXPECT_EQ(keep_alive_due_ns(0), 1'000'000'000);
    EXPECT_EQ(keep_alive_due_ns(some_time_ns), 7'000'001'000'123'456);
}

TEST(a_first_tick, comes_100_microseconds_after_now) {
    EXPECT_EQ(first_tick_ns(0), 100'000);
    EXPECT_EQ(first_tick_ns(some_time_ns), 7'000'000'000'223'456);
}

TEST(a_next_tick, is_the_tick_itself_until_it_has_passed) {
    EXPECT_EQ(next_tick_ns(1'000'000, 999'999), 1'000'000);
    EXPECT_EQ(next_tick_ns(1'000'000, 1'000'000), 1'000'000);
}

TEST(a_next_tick, comes_100_microseconds_after_a_tick_that_has_just_passed) {
    EXPECT_EQ(next_tick_ns(1'000'000, 1'000'001), 1'100'000);
    EXPECT_EQ(next_tick_ns(1'000'000, 1'099'999), 1'100'000);
    EXPECT_EQ(next_tick_ns(1'000'000, 1'100'000), 1'100'000);
}

TEST(a_next_tick, skips_the_ticks_that_were_missed_and_keeps_the_rhythm) {
    EXPECT_EQ(next_tick_ns(1'000'000, 1'100'001), 1'200'000);
    EXPECT_EQ(next_tick_ns(1'000'000, 9'950'000), 10'000'000);
    EXPECT_EQ(next_tick_ns(123, 3'600'000'000'000), 3'600'000'000'123);
}

TEST(a_goodbye, is_waited_for_for_100_milliseconds) {
    EXPECT_EQ(goodbye_deadline_ns(0), 100'000'000);
    EXPECT_EQ(goodbye_deadline_ns(some_time_ns), 7'000'000'100'123'456);
}

} // namespace
} // namespace orvanta_tests
