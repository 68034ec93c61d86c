// Sums and differences of times, up to the end of time.
#include "vantu/orvanta/common/nanoseconds.hpp"

#include <cstdint>
#include <gtest/gtest.h>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta;

TEST(time_after, is_the_sum) {
    EXPECT_EQ(time_after(0, 0), 0);
    EXPECT_EQ(time_after(5, 7), 12);
    EXPECT_EQ(time_after(-5, 7), 2);
}

TEST(time_after, ends_at_the_end_of_time) {
    constexpr std::int64_t last = 9'223'372'036'854'775'807;
    EXPECT_EQ(time_after(5, last - 6), last - 1);
    EXPECT_EQ(time_after(5, last - 5), last);
    EXPECT_EQ(time_after(5, last - 4), last);
    EXPECT_EQ(time_after(5, last), last);
    EXPECT_EQ(time_after(5, UINT64_MAX), last);
    EXPECT_EQ(time_after(last, 0), last);
    EXPECT_EQ(time_after(last, UINT64_MAX), last);
    EXPECT_EQ(time_after(INT64_MIN, UINT64_MAX), last);
    EXPECT_EQ(time_after(INT64_MIN, 1), INT64_MIN + 1);
}

TEST(time_left, is_the_difference_and_never_less_than_0) {
    EXPECT_EQ(time_left_ns(5, 12), 7);
    EXPECT_EQ(time_left_ns(5, 5), 0);
    EXPECT_EQ(time_left_ns(5, 4), 0);
    EXPECT_EQ(time_left_ns(5, INT64_MIN), 0);
    EXPECT_EQ(time_left_ns(5, latest_ns), latest_ns - 5);
}

} // namespace
} // namespace orvanta_tests
