// Curves in memory of one size.
#include "ctl/watch/curves.hpp"

#include <array>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace {

using vantu::orvanta::ctl::curve_point;
using vantu::orvanta::ctl::curve_store;

// The width of the narrowest columns.
constexpr double column_s = 0.0001;
constexpr float not_a_number = std::numeric_limits<float>::quiet_NaN();

void add(curve_store& to, double seconds, float on_0, float on_1) {
    to.add(seconds, std::array{on_0, on_1});
}

TEST(curve_store, keeps_each_value_while_there_is_room) {
    curve_store curves(2, 4);
    add(curves, 0, 1, -1);
    add(curves, 2.5 * column_s, 3, -3);
    const auto channel_0 = curves.curve(0);
    const auto channel_1 = curves.curve(1);
    ASSERT_EQ(channel_0.size(), 2U);
    EXPECT_EQ(channel_0[1].from_s, 2.5 * column_s);
    EXPECT_EQ(channel_0[1].least, 3);
    EXPECT_EQ(channel_0[1].most, 3);
    ASSERT_EQ(channel_1.size(), 2U);
    EXPECT_EQ(channel_1[0].least, -1);
}

TEST(curve_store, joins_neighbours_when_it_is_full) {
    curve_store curves(2, 4);
    for (int at = 0; at < 5; ++at) {
        add(curves, column_s * (at + 0.5), static_cast<float>(at), 0);
    }
    const auto curve = curves.curve(0);
    ASSERT_EQ(curve.size(), 3U);
    EXPECT_NEAR(curve[0].from_s, 0.5 * column_s, 1e-9);
    EXPECT_NEAR(curve[0].to_s, 1.5 * column_s, 1e-9);
    EXPECT_EQ(curve[0].least, 0);
    EXPECT_EQ(curve[0].most, 1);
    EXPECT_EQ(curve[1].least, 2);
    EXPECT_EQ(curve[1].most, 3);
    EXPECT_EQ(curve[2].least, 4);
}

TEST(curve_store, never_loses_a_peak_nor_grows) {
    curve_store curves(2, 512);
    for (int at = 0; at < 600'000; ++at) {
        add(curves, at * 0.001, at == 123'456 ? 99.0F : std::sin(static_cast<float>(at) / 1000), 0);
    }
    const auto curve = curves.curve(0);
    EXPECT_GT(curve.size(), 256U);
    EXPECT_LE(curve.size(), 512U);
    int peaks = 0;
    for (const curve_point& one : curve) {
        if (one.most == 99) {
            ++peaks;
            EXPECT_NEAR(one.from_s, 123.456, 2);
        }
        EXPECT_GE(one.least, -1);
    }
    EXPECT_EQ(peaks, 1);
}

TEST(curve_store, leaves_a_long_silence_empty) {
    curve_store curves(2, 8);
    add(curves, 0, 1, 1);
    add(curves, 86'400, 2, 2);
    const auto curve = curves.curve(0);
    ASSERT_EQ(curve.size(), 2U);
    EXPECT_EQ(curve[0].from_s, 0);
    EXPECT_EQ(curve[1].from_s, 86'400);
}

TEST(curve_store, leaves_out_what_is_no_number) {
    curve_store curves(2, 8);
    add(curves, 0, not_a_number, std::numeric_limits<float>::infinity());
    add(curves, 1.5 * column_s, 1, 2);
    EXPECT_EQ(curves.curve(0).size(), 1U);
    EXPECT_EQ(curves.curve(1).size(), 1U);
    EXPECT_EQ(curves.curve(1)[0].most, 2);
}

} // namespace
