// Counts, rates and losses of a stream.
#include "ctl/watch/statistics.hpp"

#include <gtest/gtest.h>

namespace {

using vantu::orvanta::ctl::sample_statistics;

constexpr double period_s = 0.01;

// So many samples at 100 Hz but for those that the predicate takes away; their last time.
template <typename Lost> double feed(sample_statistics& to, int count, Lost lost) {
    double now = 0;
    for (int at = 0; at < count; ++at) {
        now = at * period_s;
        if (!lost(at)) {
            to.add(now);
        }
    }
    return now;
}

TEST(statistics, count_the_samples_and_their_rate_of_the_last_second) {
    sample_statistics samples;
    const double end = feed(samples, 501, [](int at) { return at < 300 && at % 2 == 1; });
    EXPECT_EQ(samples.at(end).count, 351U);
    EXPECT_NEAR(samples.at(end).rate_hz, 100, 1);
    EXPECT_NEAR(samples.at(2).rate_hz, 0, 0.001) << "what is no longer kept does not count";
}

TEST(statistics, have_a_rate_before_the_first_second_is_over) {
    sample_statistics samples;
    const double end = feed(samples, 50, [](int) { return false; });
    EXPECT_NEAR(samples.at(end).rate_hz, 100, 3);
}

TEST(statistics, tell_a_rate_of_nothing_a_second_after_the_last_sample) {
    sample_statistics samples;
    const double end = feed(samples, 500, [](int) { return false; });
    EXPECT_NEAR(samples.at(end + 0.5).rate_hz, 50, 10);
    EXPECT_EQ(samples.at(end + 1.5).rate_hz, 0);
}

TEST(statistics, know_the_longest_gap_and_the_one_that_goes_on) {
    sample_statistics samples;
    const double end = feed(samples, 500, [](int at) { return at > 100 && at < 125; });
    EXPECT_NEAR(samples.at(end).longest_gap_s, 0.25, 1e-9);
    EXPECT_NEAR(samples.at(end + 3).longest_gap_s, 3, 1e-9);
}

TEST(statistics, of_nothing_are_nothing) {
    const sample_statistics samples;
    EXPECT_EQ(samples.at(5).count, 0U);
    EXPECT_EQ(samples.at(5).rate_hz, 0);
    EXPECT_EQ(samples.at(5).longest_gap_s, 0);
    EXPECT_FALSE(samples.at(5).missing);
}

TEST(missing_samples, are_not_known_before_257_samples) {
    sample_statistics samples;
    feed(samples, 256, [](int) { return false; });
    EXPECT_FALSE(samples.at(3).missing);
    samples.add(256 * period_s);
    EXPECT_NEAR(samples.at(3).missing.value(), 0, 1e-6);
}

TEST(missing_samples, are_estimated_from_the_usual_gap) {
    sample_statistics samples;
    feed(samples, 20'000, [](int at) { return at % 20 == 7; });
    EXPECT_NEAR(samples.at(200).missing.value(), 0.05, 0.001);
}

TEST(missing_samples, are_those_of_a_silence_too) {
    sample_statistics samples;
    feed(samples, 1000, [](int at) { return at > 100 && at <= 600; });
    // The only 256 gaps that are complete: 255 of 10 ms and the silence of 5010 ms.
    EXPECT_NEAR(samples.at(10).missing.value(), 500.0 / 756.0, 0.001);
}

TEST(missing_samples, are_none_when_the_receiver_was_late_and_took_all_at_once) {
    sample_statistics samples;
    for (int at = 0; at < 2000; ++at) {
        const bool is_late = at % 200 > 180;
        samples.add(is_late ? (at - at % 200 + 200) * period_s : at * period_s);
    }
    EXPECT_LT(samples.at(20).missing.value(), 0.01) << "less than what is told";
}

class bunches : public testing::TestWithParam<int> {};

TEST_P(bunches, say_nothing_of_missing_samples) {
    sample_statistics samples;
    for (int at = 0; at < 5000; ++at) {
        const int in_bunch = at % GetParam();
        samples.add((at - in_bunch) * period_s + in_bunch * 1e-6);
    }
    EXPECT_FALSE(samples.at(50).missing);
}
INSTANTIATE_TEST_SUITE_P(of, bunches, testing::Values(2, 3, 4, 8, 16));

} // namespace
