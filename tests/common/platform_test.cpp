// Clocks and sleeping.
#include "vantu/orvanta/common/platform.hpp"

#include <cstdint>
#include <gtest/gtest.h>
#include <thread>
#include <unistd.h>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta;

TEST(steady_clock, never_goes_back) {
    std::int64_t last = platform::steady_now_ns();
    for (int i = 0; i < 1000; ++i) {
        const std::int64_t now = platform::steady_now_ns();
        ASSERT_GE(now, last);
        last = now;
    }
}

TEST(coarse_clock, is_never_later_than_the_steady_clock) {
    for (int i = 0; i < 1000; ++i) {
        const std::int64_t coarse = platform::coarse_now_ns();
        ASSERT_LE(coarse, platform::steady_now_ns());
    }
}

TEST(coarse_clock, is_earlier_by_less_than_its_lag) {
    for (int i = 0; i < 1000; ++i) {
        const std::int64_t steady = platform::steady_now_ns();
        ASSERT_GT(platform::coarse_now_ns(), steady - platform::coarse_clock_lag_ns);
    }
}

TEST(sleeping, lasts_until_the_deadline) {
    const std::int64_t deadline = platform::steady_now_ns() + 3'000'000;
    platform::sleep_until_ns(deadline);
    EXPECT_GE(platform::steady_now_ns(), deadline);
}

TEST(sleeping, ends_at_once_when_the_deadline_has_passed) {
    const std::int64_t before = platform::steady_now_ns();
    for (const std::int64_t deadline :
         {before, std::int64_t{1}, std::int64_t{0}, std::int64_t{-1}, INT64_MIN}) {
        platform::sleep_until_ns(deadline);
    }
    EXPECT_LT(platform::steady_now_ns() - before, std::int64_t{10'000'000'000});
}

TEST(sleeping, lasts_until_the_deadline_on_a_precise_thread) {
    std::int64_t late_ns = -1;
    std::thread precise([&] {
        platform::make_sleeps_precise();
        const std::int64_t deadline = platform::steady_now_ns() + 3'000'000;
        platform::sleep_until_ns(deadline);
        late_ns = platform::steady_now_ns() - deadline;
    });
    precise.join();
    EXPECT_GE(late_ns, 0);
}

TEST(process, has_its_own_id) {
    EXPECT_EQ(platform::process_id(), static_cast<std::uint32_t>(getpid()));
}

} // namespace
} // namespace orvanta_tests
