// The loops around the poll, on a clock that only the script moves.
#include "core/poll_loop.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <utility>
#include <vector>

namespace orvanta_tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using vantu::orvanta::await_goodbye;
using vantu::orvanta::poll_step;
using vantu::orvanta::run_poll_loop;

// A poll of the script: how long it takes and how it ends.
struct scripted_poll {
    poll_step step{poll_step::idle};
    std::int64_t lasts_ns{0};
};

// Plays its polls and repeats the last one. A sleep ends at the asked time, or late by what the script says.
class scripted_system {
  public:
    explicit scripted_system(std::vector<scripted_poll> polls) : polls_(std::move(polls)) {}

    [[nodiscard]] std::int64_t now_ns() const { return now_ns_; }
    [[nodiscard]] bool is_stopped() const { return polls_made == stop_after; }

    void sleep_until_ns(std::int64_t time_ns) {
        sleeps.push_back(time_ns);
        now_ns_ =
            std::max(now_ns_, time_ns) + std::exchange(next_sleep_is_late_by_ns, every_sleep_is_late_by_ns);
    }

    poll_step poll() {
        const scripted_poll& poll = polls_[std::min(polls_made, polls_.size() - 1)];
        ++polls_made;
        now_ns_ += poll.lasts_ns;
        return poll.step;
    }

    std::vector<std::int64_t> sleeps; // the times that were asked for
    std::size_t polls_made{0};
    std::size_t stop_after{SIZE_MAX};
    std::int64_t next_sleep_is_late_by_ns{0};
    std::int64_t every_sleep_is_late_by_ns{0};

  private:
    std::vector<scripted_poll> polls_;
    std::int64_t now_ns_{5'000'000};
};

constexpr scripted_poll idle{poll_step::idle};
constexpr scripted_poll handled{poll_step::handled};
constexpr scripted_poll finished{poll_step::finished};

TEST(the_poll_loop, polls_once_a_tick_of_100_microseconds_while_idle) {
    scripted_system system({idle});
    system.next_sleep_is_late_by_ns = system.every_sleep_is_late_by_ns = 1;
    system.stop_after = 4;
    run_poll_loop(system);
    EXPECT_THAT(system.sleeps, ElementsAre(5'100'000, 5'200'000, 5'300'000, 5'400'000));
    EXPECT_EQ(system.polls_made, 4U);
}

TEST(the_poll_loop, takes_the_tick_that_is_now_for_the_next_one) {
    scripted_system system({idle, idle, {poll_step::idle, 1}, idle, finished});
    run_poll_loop(system);
    EXPECT_THAT(system.sleeps, ElementsAre(5'100'000, 5'100'000, 5'100'000, 5'200'000));
}

TEST(the_poll_loop, does_not_sleep_after_an_event) {
    scripted_system system({handled, handled, handled, finished});
    run_poll_loop(system);
    EXPECT_EQ(system.polls_made, 4U);
    EXPECT_THAT(system.sleeps, IsEmpty());
}

TEST(the_poll_loop, sleeps_again_after_a_burst_of_events) {
    scripted_system system(
        {idle, {poll_step::handled, 30'000}, {poll_step::handled, 30'000}, idle, finished});
    run_poll_loop(system);
    EXPECT_THAT(system.sleeps, ElementsAre(5'100'000, 5'100'000));
}

TEST(the_poll_loop, does_not_make_up_ticks_that_were_missed) {
    scripted_system system({idle, idle, idle, finished});
    system.next_sleep_is_late_by_ns = 730'001;
    system.every_sleep_is_late_by_ns = 1;
    run_poll_loop(system);
    EXPECT_THAT(system.sleeps, ElementsAre(5'100'000, 5'900'000, 6'000'000));
}

TEST(the_poll_loop, keeps_its_rhythm_after_events_that_took_long) {
    scripted_system system({{poll_step::handled, 1'234'567}, idle, idle, finished});
    run_poll_loop(system);
    EXPECT_THAT(system.sleeps, ElementsAre(5'100'000, 6'300'000));
}

TEST(the_poll_loop, ends_with_the_poll_that_finishes) {
    scripted_system system({finished});
    run_poll_loop(system);
    EXPECT_EQ(system.polls_made, 1U);
    EXPECT_THAT(system.sleeps, IsEmpty());
}

TEST(the_poll_loop, does_not_poll_once_it_is_stopped) {
    scripted_system system({handled});
    system.stop_after = 0;
    run_poll_loop(system);
    EXPECT_EQ(system.polls_made, 0U);
}

TEST(the_poll_loop, is_stopped_between_two_events) {
    scripted_system system({handled});
    system.stop_after = 3;
    run_poll_loop(system);
    EXPECT_EQ(system.polls_made, 3U);
}

TEST(awaiting_a_goodbye, polls_every_100_microseconds_for_100_milliseconds) {
    scripted_system system({idle});
    await_goodbye(system);
    EXPECT_EQ(system.polls_made, 1000U);
    EXPECT_EQ(system.now_ns(), 105'000'000);
    EXPECT_EQ(system.sleeps.front(), 5'100'000);
    EXPECT_EQ(system.sleeps.back(), 105'000'000);
}

TEST(awaiting_a_goodbye, ends_at_the_deadline_even_while_events_keep_coming) {
    scripted_system system({{poll_step::handled, 1'000'000}});
    await_goodbye(system);
    EXPECT_EQ(system.polls_made, 100U);
    EXPECT_THAT(system.sleeps, IsEmpty());
}

TEST(awaiting_a_goodbye, polls_once_more_one_nanosecond_before_the_deadline) {
    scripted_system early({{poll_step::handled, 99'999'999}, handled, finished});
    await_goodbye(early);
    EXPECT_EQ(early.polls_made, 3U);
    scripted_system late({{poll_step::handled, 100'000'000}, handled, finished});
    await_goodbye(late);
    EXPECT_EQ(late.polls_made, 1U);
}

TEST(awaiting_a_goodbye, ends_with_the_poll_that_finishes) {
    scripted_system system({idle, handled, finished});
    await_goodbye(system);
    EXPECT_EQ(system.polls_made, 3U);
    EXPECT_THAT(system.sleeps, ElementsAre(5'100'000));
}

} // namespace
} // namespace orvanta_tests
