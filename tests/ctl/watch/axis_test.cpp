// Round numbers along an axis.
#include "ctl/watch/axis.hpp"

#include <gtest/gtest.h>
#include <string>

namespace {

using namespace vantu::orvanta::ctl;

std::string labels(const axis& of) {
    std::string text;
    for (const tick& one : of.ticks) {
        text += text.empty() ? "" : " ";
        text += one.label;
    }
    return text;
}

TEST(an_axis, has_round_numbers_around_its_values) {
    EXPECT_EQ(labels(axis_of(-0.06, 0.0599, 4)), "-0.10 -0.05 0.00 0.05 0.10");
    EXPECT_EQ(labels(axis_of(0, 10, 10)), "0 1 2 3 4 5 6 7 8 9 10");
    EXPECT_EQ(labels(axis_of(0, 10.5, 10)), "0 1 2 3 4 5 6 7 8 9 10 11");
    EXPECT_EQ(labels(axis_of(0, 600, 10)), "0 100 200 300 400 500 600");
    EXPECT_EQ(labels(axis_of(0.168, 0.171, 4)), "0.168 0.169 0.170 0.171");
    EXPECT_NEAR(axis_of(-0.06, 0.0599, 4).begin, -0.1, 1e-12);
}

TEST(an_axis, of_one_value_has_room_around_it) {
    EXPECT_EQ(labels(axis_of(5, 5, 4)), "4.5 5.0 5.5");
    EXPECT_EQ(labels(axis_of(0, 0, 4)), "-1.0 -0.5 0.0 0.5 1.0");
}

TEST(an_axis, of_extreme_values_stays_readable) {
    EXPECT_EQ(labels(axis_of(-3e38, 3e38, 4)), "-4e+38 -2e+38 0 2e+38 4e+38");
    EXPECT_EQ(labels(axis_of(0, 1e-7, 4)), "0 5e-08 1e-07");
}

} // namespace
