// How long the library asks the system to wait: between two polls, and for a reply.
#include "support/service_session.hpp"
#include "support/system_calls.hpp"
#include "vantu/orvanta/common/platform.hpp"

#include <cstdint>
#include <ctime>
#include <gtest/gtest.h>
#include <mutex>
#include <utility>
#include <vector>

namespace orvanta_tests {
namespace {

struct sleep {
    std::int64_t begun_ns;
    std::int64_t until_ns; // the time that was asked for
    std::int64_t ended_ns;
};

std::mutex sleeps_mutex;
std::vector<sleep> sleeps; // those that have ended

std::vector<sleep> take_sleeps() {
    const std::lock_guard lock(sleeps_mutex);
    return std::exchange(sleeps, {});
}

} // namespace
} // namespace orvanta_tests

// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming): the linker's names
extern "C" {
int __real_clock_nanosleep(clockid_t clock, int flags, const timespec* time, timespec* left);

int __wrap_clock_nanosleep(clockid_t clock, int flags, const timespec* time, timespec* left) {
    const std::int64_t begun_ns = vantu::orvanta::platform::steady_now_ns();
    const int result = __real_clock_nanosleep(clock, flags, time, left);
    const std::lock_guard lock(orvanta_tests::sleeps_mutex);
    orvanta_tests::sleeps.push_back(
        {begun_ns, time->tv_sec * 1'000'000'000 + time->tv_nsec, vantu::orvanta::platform::steady_now_ns()});
    return result;
}
}
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)

namespace orvanta_tests {
namespace {

constexpr std::int64_t tick_ns = 100'000;

TEST(an_idle_polling_thread, sleeps_until_the_next_tick_of_100_microseconds_after_each_poll) {
    service_session session;
    static_cast<void>(take_sleeps());
    const auto ignore = [](void*, const vantu_orvanta_event*) {};
    auto* thread = vantu_orvanta_poll_thread_start(session.context, ignore, nullptr);
    EXPECT_TRUE(wait_until([] {
        const std::lock_guard lock(sleeps_mutex);
        return sleeps.size() >= 50;
    }));
    vantu_orvanta_poll_thread_stop(thread);
    const std::vector<sleep> taken = take_sleeps();
    for (std::size_t i = 1; i < taken.size(); ++i) {
        EXPECT_EQ((taken[i].until_ns - taken[i - 1].until_ns) % tick_ns, 0) << "the rhythm is kept";
        EXPECT_GE(taken[i].until_ns, taken[i - 1].ended_ns) << "a tick was made up";
        EXPECT_LT(taken[i].until_ns, taken[i].begun_ns + tick_ns) << "more than a tick";
    }
}

class a_connect_to_a_silent_service : public testing::Test {
  protected:
    ~a_connect_to_a_silent_service() override { vantu_orvanta_disconnect(context); }

    std::int32_t connect(std::uint64_t timeout_ns) {
        service.expect(connect_request());
        return vantu_orvanta_connect_ports(context, "0", service.port().c_str(), "test client", 0, 0,
                                           keep_alive_ns, timeout_ns);
    }

    scripted_service service;
    vantu_orvanta_context* context{vantu_orvanta_context_create()};
};

TEST_F(a_connect_to_a_silent_service, waits_for_no_longer_than_its_time_out) {
    for (const std::uint64_t timeout_ns : {std::uint64_t{20'000'000}, std::uint64_t{41'999'999}}) {
        const scripted_calls calls;
        EXPECT_EQ(connect(timeout_ns), vantu_orvanta_timed_out);
        for (const std::int64_t limit_ns : calls.poll_limits()) {
            EXPECT_GE(limit_ns, 0) << "a wait without end";
            EXPECT_LE(limit_ns, static_cast<std::int64_t>(timeout_ns / 1'000'000 * 1'000'000));
        }
    }
}

TEST_F(a_connect_to_a_silent_service, waits_for_as_long_as_its_time_out) {
    constexpr std::int64_t hour_ns = 3'600'000'000'000;
    scripted_calls calls;
    // The answer comes once the client has begun to wait.
    calls.before(system_call::ppoll, 1, [&] {
        service.await_script();
        service.push(acceptance());
    });
    EXPECT_EQ(connect(hour_ns), vantu_orvanta_success);
    ASSERT_FALSE(calls.poll_limits().empty());
    EXPECT_GT(calls.poll_limits().front(), hour_ns - 600'000'000'000);
    service.expect(goodbye()).answer(goodbye_received());
}

TEST_F(a_connect_to_a_silent_service, takes_no_reply_that_comes_after_the_time_out) {
    scripted_calls calls;
    EXPECT_EQ(connect(20'000'000), vantu_orvanta_timed_out);
    service.push(acceptance());
    EXPECT_EQ(poll_once(context).code, vantu_orvanta_invalid_connection_state);
}

} // namespace
} // namespace orvanta_tests
