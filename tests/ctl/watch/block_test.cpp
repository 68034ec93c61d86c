// The live block at several widths.
#include "ctl/watch/block.hpp"

#include <algorithm>
#include <gtest/gtest.h>

namespace {

using namespace vantu::orvanta::ctl;
using vantu::orvanta::orientation;

live_view view() {
    live_view shown;
    shown.seconds = 12.34;
    shown.samples = {12340, 1000, 0.0021, 0.0};
    observation one;
    one.position = {0.05F, -0.1F, 0};
    one.velocity = {0.5F, -0.25F, 1234.5F};
    one.news.motor_current = std::array<float, 3>{0.2F, -0.2F, 0.1F};
    one.news.power_supply = std::uint8_t{1};
    one.news.orientation = orientation{1, 0, -0.5F, 0.25F};
    shown.latest = one;
    shown.greatest_position = 0.1F;
    shown.greatest_velocity = 2000;
    shown.greatest_current = 0.15F;
    return shown;
}

constexpr block_style plain_80{80, 24, false};

TEST(the_block, fills_a_terminal_of_80_columns) {
    const std::vector<std::string> expected{
        "12.3 s  orvanta3 3001",
        "position x         +0.0500 [                    |##########          ] 0.1",
        "position y         -0.1000 [####################|                    ] 0.1",
        "position z         +0.0000 [                    |                    ] 0.1",
        "velocity x         +0.5000 [                    |                    ] 2000",
        "velocity y         -0.2500 [                    |                    ] 2000",
        "velocity z       +1.23e+03 [                    |############        ] 2000",
        "orientation r      +1.0000 [                    |####################] 1",
        "orientation x      +0.0000 [                    |                    ] 1",
        "orientation y      -0.5000 [          ##########|                    ] 1",
        "orientation z      +0.2500 [                    |#####               ] 1",
        "motor current 1    +0.2000 [                    |####################] 0.2",
        "motor current 2    -0.2000 [####################|                    ] 0.2",
        "motor current 3    +0.1000 [                    |##########          ] 0.2",
        "power supply             1",
        "rate                1000.0 a second",
        "samples              12340",
        "missing          none seen",
        "rejected                 0",
        "longest gap            2.1 ms",
        "units           as the service has them",
    };
    EXPECT_EQ(block_of("orvanta3 3001", view(), 0, plain_80), expected);
}

TEST(the_block, stays_within_40_columns) {
    const auto block =
        block_of("orvanta3 3001  6e2b8410-5f3c-4d71-9a03-c53800000001", view(), 0, {40, 24, false});
    EXPECT_EQ(block[0], "12.3 s  orvanta3 3001  6e2b8410-5f3c-4d");
    EXPECT_EQ(block[2], "position y         -0.1000 [####|    ]");
    EXPECT_EQ(block[20], "units           as the service has them");
    for (const std::string& line : block) {
        EXPECT_LE(line.size(), 39U) << line;
    }
}

class any_width : public testing::TestWithParam<std::size_t> {};

TEST_P(any_width, is_never_filled) {
    for (const std::string& line : block_of("orvanta3 3001", view(), 3, {GetParam(), 24, false})) {
        EXPECT_LT(line.size(), std::max<std::size_t>(GetParam(), 2)) << line;
    }
}
INSTANTIATE_TEST_SUITE_P(of, any_width, testing::Values(1, 2, 10, 27, 31, 32, 33, 40, 59, 60, 61, 80, 200));

TEST(the_block, leaves_a_line_of_a_low_terminal_for_the_cursor) {
    EXPECT_EQ(block_of("orvanta3 3001", view(), 0, {80, 8, false}).size(), 7U);
    EXPECT_EQ(block_of("orvanta3 3001", view(), 0, {80, 1, false}).size(), 1U);
}

TEST(the_block, shows_dashes_before_the_first_values) {
    const auto block = block_of("orvanta3 3001", {}, 0, plain_80);
    EXPECT_EQ(block[1], "position x               -");
    EXPECT_EQ(block[7], "orientation r            -");
    EXPECT_EQ(block[14], "power supply             -");
    EXPECT_EQ(block[17], "missing          not known");
}

TEST(the_block, tells_of_losses) {
    live_view shown = view();
    shown.samples.missing = 0.051;
    const auto block = block_of("orvanta3 3001", shown, 17, plain_80);
    EXPECT_EQ(block[17], "missing          about 5 %");
    EXPECT_EQ(block[18], "rejected                17");
}

TEST(the_block, has_colour_only_where_it_may) {
    live_view shown = view();
    shown.samples.missing = 0.051;
    const auto block = block_of("orvanta3 3001", shown, 0, {40, 24, true});
    EXPECT_EQ(block[0], "\x1b[1m12.3 s  orvanta3 3001\x1b[0m");
    EXPECT_EQ(block[2], "position y         -0.1000 \x1b[36m[####|    ]\x1b[0m");
    EXPECT_EQ(block[17], "\x1b[33mmissing          about 5 %\x1b[0m");
    for (const std::string& line : block_of("orvanta3 3001", shown, 9, plain_80)) {
        EXPECT_EQ(line.find('\x1b'), std::string::npos) << line;
    }
}

TEST(a_bar, grows_from_its_middle) {
    EXPECT_EQ(bar_of(0, 1, 11), "[    |    ]");
    EXPECT_EQ(bar_of(0.5F, 1, 11), "[    |##  ]");
    EXPECT_EQ(bar_of(-1, 1, 11), "[####|    ]");
    EXPECT_EQ(bar_of(-7, 1, 11), "[####|    ]");
    EXPECT_EQ(bar_of(std::numeric_limits<float>::quiet_NaN(), 1, 11), "[    |    ]");
}

TEST(a_scale, is_a_round_number_that_holds_all) {
    EXPECT_EQ(scale_for(0), 1);
    EXPECT_EQ(scale_for(0.06F), 0.1F);
    EXPECT_EQ(scale_for(0.2F), 0.2F);
    EXPECT_EQ(scale_for(0.21F), 0.5F);
    EXPECT_EQ(scale_for(51), 100);
    EXPECT_EQ(scale_for(1000), 1000);
}

} // namespace
