// The parts of a session that need no service: who arrives when, and when a silent service counts as lost.
#include "session/arrivals.hpp"
#include "session/liveness.hpp"

#include <gtest/gtest.h>
#include <limits>
#include <vector>

namespace {

using vantu::orvanta::arrivals;
using vantu::orvanta::liveness;

constexpr std::int64_t never = std::numeric_limits<std::int64_t>::max();
using ids = std::vector<std::uint32_t>;

TEST(arrivals, come_with_their_details) {
    arrivals expected;
    expected.listed(7, 1000);
    EXPECT_EQ(expected.take_due(1001), ids{});
    expected.described(7);
    EXPECT_EQ(expected.take_due(1001), ids{7});
    EXPECT_EQ(expected.take_due(1002), ids{});
    EXPECT_EQ(expected.due_ns(), never);
}

TEST(arrivals, wait_100_ms_for_details_that_do_not_come) {
    arrivals expected;
    expected.listed(7, 1000);
    EXPECT_EQ(expected.due_ns(), 100'001'000);
    EXPECT_EQ(expected.take_due(100'000'999), ids{});
    EXPECT_EQ(expected.take_due(100'001'000), ids{7});
}

TEST(arrivals, need_a_listing) {
    arrivals expected;
    expected.described(7);
    EXPECT_EQ(expected.take_due(0), ids{});
    EXPECT_EQ(expected.due_ns(), never);
}

TEST(arrivals, come_in_the_order_of_their_listing) {
    arrivals expected;
    for (const std::uint32_t id : {9U, 3U, 5U}) {
        expected.listed(id, 0);
        expected.described(id);
    }
    EXPECT_EQ(expected.take_due(0), (ids{9, 3, 5}));
}

TEST(arrivals, come_once_for_a_device_that_is_listed_again) {
    arrivals expected;
    expected.listed(7, 0);
    expected.described(7);
    EXPECT_EQ(expected.take_due(0), ids{7});
    expected.listed(7, 1);
    expected.described(7);
    EXPECT_EQ(expected.take_due(200'000'000), ids{});
}

TEST(arrivals, come_again_after_a_removal) {
    arrivals expected;
    expected.listed(7, 0);
    EXPECT_FALSE(expected.removed(7)); // it had not arrived
    expected.listed(7, 0);
    expected.described(7);
    EXPECT_EQ(expected.take_due(0), ids{7});
    EXPECT_TRUE(expected.removed(7));
    EXPECT_FALSE(expected.removed(7));
    expected.listed(7, 0);
    expected.described(7);
    EXPECT_EQ(expected.take_due(0), ids{7});
}

TEST(a_silent_service, is_asked_three_times_and_then_counts_as_lost) {
    liveness service(1000, 0);
    EXPECT_EQ(service.judge(999), liveness::verdict::wait);
    EXPECT_EQ(service.due_ns(), 1000);
    for (const std::int64_t time : {1000, 2000, 3000}) {
        EXPECT_EQ(service.judge(time), liveness::verdict::ask);
        EXPECT_EQ(service.judge(time), liveness::verdict::wait);
    }
    EXPECT_EQ(service.judge(3999), liveness::verdict::wait);
    EXPECT_EQ(service.judge(4000), liveness::verdict::lost);
}

TEST(a_silent_service, is_asked_anew_after_any_word) {
    liveness service(1000, 0);
    EXPECT_EQ(service.judge(1000), liveness::verdict::ask);
    EXPECT_EQ(service.judge(2000), liveness::verdict::ask);
    service.heard(2500);
    EXPECT_EQ(service.due_ns(), 3500);
    for (const std::int64_t time : {3500, 4500, 5500}) {
        EXPECT_EQ(service.judge(time), liveness::verdict::ask);
    }
    EXPECT_EQ(service.judge(6500), liveness::verdict::lost);
}

TEST(a_silent_service, is_never_asked_without_an_interval) {
    liveness service(0, 0);
    EXPECT_EQ(service.due_ns(), never);
    EXPECT_EQ(service.judge(never), liveness::verdict::wait);
}

} // namespace
