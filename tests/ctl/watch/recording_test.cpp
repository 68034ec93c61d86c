// A recording between the session's thread and the main thread.
#include "ctl/watch/recording.hpp"

#include <gtest/gtest.h>

namespace {

using namespace vantu::orvanta;
using namespace vantu::orvanta::ctl;

const auto begin = std::chrono::steady_clock::time_point(std::chrono::hours(1));

cursor_sample sample(std::uint64_t number, std::chrono::milliseconds after_begin) {
    cursor_sample one;
    one.stream = 2;
    one.number = number;
    one.received = begin + after_begin;
    one.values = {1, 2, -3, 4, -5, static_cast<float>(number)};
    return one;
}

void feed(recording& to, std::uint64_t count) {
    for (std::uint64_t number = 1; number <= count; ++number) {
        to.add(sample(number, std::chrono::milliseconds(number - 1)));
    }
}

TEST(a_recording, hands_out_each_sample_once_with_its_time_since_the_first) {
    recording taken(std::nullopt);
    taken.add(sample(7, std::chrono::milliseconds(3)));
    taken.add(sample(8, std::chrono::milliseconds(4)));
    std::vector<observation> seen;
    taken.take(seen);
    ASSERT_EQ(seen.size(), 2U);
    EXPECT_EQ(seen[0].seconds, 0);
    EXPECT_NEAR(seen[1].seconds, 0.001, 1e-9);
    EXPECT_EQ(seen[1].number, 8U);
    EXPECT_EQ(seen[1].stream, 2);
    EXPECT_EQ(seen[1].position, (std::array<float, 3>{1, 2, -3}));
    EXPECT_EQ(seen[1].velocity, (std::array<float, 3>{4, -5, 8}));
    taken.take(seen);
    EXPECT_TRUE(seen.empty());
}

TEST(a_recording, gives_news_to_the_next_printed_sample_alone) {
    recording taken(1);
    taken.add(motor_current{1, {1, 2, 3}}, begin);
    taken.add(sample(1, std::chrono::milliseconds(0)));
    taken.add(power_supply{1, 9});
    taken.add(orientation{1, 0, 0, 0});
    taken.add(sample(2, std::chrono::milliseconds(10)));
    taken.add(sample(3, std::chrono::milliseconds(1000)));
    std::vector<observation> seen;
    taken.take(seen);
    ASSERT_EQ(seen.size(), 2U) << "one a second";
    EXPECT_TRUE(seen[0].news.motor_current);
    EXPECT_FALSE(seen[0].news.power_supply);
    EXPECT_EQ(seen[1].number, 3U);
    EXPECT_FALSE(seen[1].news.motor_current);
    EXPECT_EQ(seen[1].news.power_supply, std::uint8_t{9});
    EXPECT_TRUE(seen[1].news.orientation);
}

TEST(a_recording, counts_what_a_slow_reader_misses_and_keeps_the_news_for_later) {
    recording taken(std::nullopt);
    feed(taken, recording::longest_queue);
    EXPECT_EQ(taken.unprinted(), 0U);
    taken.add(power_supply{1, 4});
    taken.add(sample(5000, std::chrono::seconds(5)));
    taken.add(sample(5001, std::chrono::seconds(6)));
    EXPECT_EQ(taken.unprinted(), 2U);
    EXPECT_EQ(taken.view(begin).samples.count, recording::longest_queue + 2);
    std::vector<observation> seen;
    taken.take(seen);
    EXPECT_EQ(seen.size(), recording::longest_queue);
    taken.add(sample(5002, std::chrono::seconds(7)));
    taken.take(seen);
    ASSERT_EQ(seen.size(), 1U);
    EXPECT_EQ(seen[0].news.power_supply, std::uint8_t{4});
}

TEST(a_recording, shows_the_last_of_everything_and_the_greatest_values) {
    recording taken(0.001);
    taken.add(motor_current{1, {-7, 2, 3}}, begin);
    taken.add(orientation{0.5F, 0, 0, 0});
    feed(taken, 5);
    taken.add(motor_current{1, {1, 2, 3}}, begin + std::chrono::seconds(1));
    const live_view shown = taken.view(begin + std::chrono::seconds(2));
    EXPECT_NEAR(shown.seconds, 2, 1e-9);
    EXPECT_EQ(shown.samples.count, 5U);
    ASSERT_TRUE(shown.latest);
    EXPECT_EQ(shown.latest->number, 5U);
    EXPECT_EQ(shown.latest->news.motor_current, (std::array<float, 3>{1, 2, 3}));
    EXPECT_TRUE(shown.latest->news.orientation);
    EXPECT_FALSE(shown.latest->news.power_supply);
    EXPECT_EQ(shown.greatest_position, 3);
    EXPECT_EQ(shown.greatest_velocity, 5);
    EXPECT_EQ(shown.greatest_current, 7);
}

TEST(a_recording, draws_samples_that_were_not_printed) {
    recording taken(1);
    feed(taken, 100);
    taken.add(motor_current{1, {1, 2, 3}}, begin + std::chrono::milliseconds(50));
    EXPECT_EQ(taken.cursor_curve(0).size(), 100U);
    EXPECT_EQ(taken.cursor_curve(5).back().most, 100);
    ASSERT_EQ(taken.current_curve(2).size(), 1U);
    EXPECT_EQ(taken.current_curve(2)[0].most, 3);
    EXPECT_NEAR(taken.current_curve(2)[0].from_s, 0.05, 1e-9);
}

TEST(a_recording, takes_nothing_more_after_its_close) {
    recording taken(std::nullopt);
    feed(taken, 3);
    taken.close();
    taken.add(sample(4, std::chrono::milliseconds(9)));
    taken.add(motor_current{1, {1, 2, 3}}, begin);
    std::vector<observation> seen;
    taken.take(seen);
    EXPECT_EQ(seen.size(), 3U);
    EXPECT_EQ(taken.view(begin).samples.count, 3U);
    EXPECT_EQ(taken.cursor_curve(0).size(), 3U);
    EXPECT_TRUE(taken.current_curve(0).empty());
}

TEST(a_recording, remembers_what_ended_it_first) {
    recording taken(std::nullopt);
    EXPECT_FALSE(taken.end_reason());
    taken.end("the device was unplugged");
    taken.end("the connection is lost");
    EXPECT_EQ(taken.end_reason(), "the device was unplugged");
}

} // namespace
