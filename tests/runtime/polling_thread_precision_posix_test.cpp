// The timers of a polling thread: the system lets its sleeps end on time.
#include "support/client_session.hpp"

#include <atomic>
#include <gtest/gtest.h>
#include <sys/prctl.h>

namespace {

using namespace orvanta_tests;

int timer_slack_of_this_thread() {
    return prctl(PR_GET_TIMERSLACK, 0L, 0L, 0L, 0L);
}

TEST(the_polling_thread, has_the_least_timer_slack_there_is) {
    std::atomic<int> slack_ns{0};
    const auto note_slack = [](void* noted, const vantu_orvanta_event*) {
        *static_cast<std::atomic<int>*>(noted) = timer_slack_of_this_thread();
    };
    const int slack_here = timer_slack_of_this_thread();
    service_session session;
    auto* thread = vantu_orvanta_poll_thread_start(session.context, note_slack, &slack_ns);
    session.service.push(datagram({op(2, 1)}));
    EXPECT_TRUE(wait_until([&] { return slack_ns != 0; }));
    vantu_orvanta_poll_thread_stop(thread);
    EXPECT_EQ(slack_ns, 1);
    EXPECT_EQ(timer_slack_of_this_thread(), slack_here) << "of the thread that starts it";
}

} // namespace
