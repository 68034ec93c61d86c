// Precise sleeps on Linux: the timer slack of a thread.
#include "vantu/orvanta/common/platform.hpp"

#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <thread>

namespace orvanta_tests {
namespace {

int timer_slack_of_this_thread() {
    return prctl(PR_GET_TIMERSLACK, 0L, 0L, 0L, 0L);
}

TEST(precise_sleeps, have_the_least_timer_slack_there_is_on_the_thread_that_asked) {
    const int slack_here = timer_slack_of_this_thread();
    int slack_there_ns = 0;
    std::thread asking([&] {
        vantu::orvanta::platform::make_sleeps_precise();
        slack_there_ns = timer_slack_of_this_thread();
    });
    asking.join();
    EXPECT_EQ(slack_there_ns, 1);
    EXPECT_EQ(timer_slack_of_this_thread(), slack_here);
}

} // namespace
} // namespace orvanta_tests
