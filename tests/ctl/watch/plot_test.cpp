// The picture of curves, and its parts.
#include "ctl/support/xml_check.hpp"
#include "ctl/watch/plot.hpp"
#include "ctl/watch/plot_path.hpp"
#include "ctl/watch/recording_plot.hpp"

#include <algorithm>
#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

namespace {

using namespace vantu::orvanta::ctl;
using testing::HasSubstr;
using testing::Not;

constexpr frame inside{100, 0, 100, 50, 10, -1, 1};

curve_point point(double seconds, float value) {
    return {seconds, seconds, value, value};
}

std::vector<curve_point> wave(int count) {
    std::vector<curve_point> points;
    for (int at = 0; at < count; ++at) {
        const float value = std::sin(static_cast<float>(at));
        points.push_back({at * 0.1, at * 0.1, value - 0.1F, value + 0.1F});
    }
    return points;
}

plot drawn_with(std::vector<curve_point> points) {
    return {"orvanta3 <3001>",
            "2026-03-01 12:30:05 UTC, 10.0 s",
            10,
            {{"position", {{"x", std::move(points)}, {"y", {}}}}}};
}

TEST(a_frame, has_time_to_the_right_and_values_upwards) {
    EXPECT_EQ(inside.x(0), 100);
    EXPECT_EQ(inside.x(10), 200);
    EXPECT_EQ(inside.y(1), 0);
    EXPECT_EQ(inside.y(-1), 50);
}

TEST(a_curve, is_thinned_to_least_and_most_of_each_unit_of_width) {
    const auto fewer =
        thinned({point(0.01, 0.1F), point(0.02, -0.5F), point(0.03, 0.4F), point(0.11, 0)}, inside);
    ASSERT_EQ(fewer.size(), 2U);
    EXPECT_EQ(fewer[0].least, -0.5F);
    EXPECT_EQ(fewer[0].most, 0.4F);
    EXPECT_EQ(fewer[0].to_s, 0.03);
    EXPECT_EQ(fewer[1].from_s, 0.11);
}

TEST(a_curve, breaks_where_nothing_came_for_long) {
    EXPECT_TRUE(breaks_of({point(0, 0), point(1, 0), point(2, 0), point(9, 0)}).empty());
    EXPECT_EQ(breaks_of({point(0, 0), point(1, 0), point(2, 0), point(3, 0), point(12, 0), point(13, 0)}),
              (std::vector<std::size_t>{3}));
    EXPECT_TRUE(breaks_of({point(0, 0), point(100, 0)}).empty());
}

TEST(a_curve, of_few_points_has_marks_and_a_line) {
    EXPECT_EQ(path_of({point(0, 0), point(5, 1), point(10, -1)}, inside, "#000000"),
              "<circle cx=\"100.0\" cy=\"25.0\" r=\"2.5\" fill=\"#000000\"/>\n"
              "<circle cx=\"150.0\" cy=\"0.0\" r=\"2.5\" fill=\"#000000\"/>\n"
              "<circle cx=\"200.0\" cy=\"50.0\" r=\"2.5\" fill=\"#000000\"/>\n"
              "<path class=\"curve\" stroke=\"#000000\" d=\"M100 25L150 0L200 50\"/>\n");
}

TEST(a_curve, of_one_point_is_a_mark) {
    EXPECT_EQ(path_of({point(0, 0)}, inside, "#000000"),
              "<circle cx=\"100.0\" cy=\"25.0\" r=\"2.5\" fill=\"#000000\"/>\n");
    EXPECT_EQ(path_of({}, inside, "#000000"), "");
}

TEST(a_curve, goes_through_both_ends_of_a_wide_range) {
    EXPECT_THAT(path_of({point(0, 1), {5, 5, -1, 1}, point(10, -1)}, inside, "#000000"),
                HasSubstr("d=\"M100 0L150 0L150 50L200 50\""));
}

TEST(a_curve, that_falls_or_rises_is_one_line_through_its_columns) {
    const std::vector<curve_point> falling{{0, 4, 0.2F, 1}, {5, 9, -1, 0}};
    EXPECT_THAT(path_of(falling, inside, "#000000"), HasSubstr("d=\"M100 0L140 20L150 25L190 50\""));
    const std::vector<curve_point> rising{{0, 4, -1, -0.2F}, {5, 9, 0, 1}};
    EXPECT_THAT(path_of(rising, inside, "#000000"), HasSubstr("d=\"M100 50L140 30L150 25L190 0\""));
}

TEST(a_picture, tells_of_itself) {
    const std::string svg = svg_of(drawn_with(wave(101)));
    EXPECT_THAT(svg, testing::StartsWith("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<svg "));
    EXPECT_THAT(svg, testing::EndsWith("</svg>\n"));
    EXPECT_THAT(svg, HasSubstr(">orvanta3 &lt;3001&gt;</text>"));
    EXPECT_THAT(svg, HasSubstr(">2026-03-01 12:30:05 UTC, 10.0 s</text>"));
    EXPECT_THAT(svg, HasSubstr(">position</text>"));
    EXPECT_THAT(svg, HasSubstr(">time [s]</text>"));
    EXPECT_THAT(svg, HasSubstr(" text-anchor=\"end\">-1.0</text>"));
    EXPECT_THAT(svg, HasSubstr(" text-anchor=\"middle\">10</text>"));
    EXPECT_THAT(svg, HasSubstr(">y</text>"));
}

TEST(a_picture, has_the_date_of_its_recording) {
    using namespace std::chrono;
    EXPECT_EQ(date_text(system_clock::time_point(milliseconds(1'772'368'205'900))),
              "2026-03-01 12:30:05 UTC");
    const plot of_nothing = plot_of(recording(std::nullopt), {}, "title", {});
    EXPECT_EQ(of_nothing.subtitle, "1970-01-01 00:00:00 UTC, 0.0 s, 0 samples");
    EXPECT_EQ(of_nothing.panels.size(), 3U);
}

TEST(a_picture, is_well_formed) {
    EXPECT_EQ(orvanta_tests::fault_in_xml(svg_of(drawn_with(wave(101)))), "");
    EXPECT_EQ(orvanta_tests::fault_in_xml(svg_of(drawn_with({}))), "");
}

TEST(the_check_of_pictures, finds_what_is_wrong) {
    using orvanta_tests::fault_in_xml;
    EXPECT_EQ(fault_in_xml("<?xml version=\"1.0\"?>\n<a b=\"1\"><c/>x &lt; y</a>\n"), "");
    EXPECT_EQ(fault_in_xml("<a><c></a></c>"), "</a> ends <c>");
    EXPECT_EQ(fault_in_xml("<a>"), "<a> does not end");
    EXPECT_EQ(fault_in_xml("<a b=1></a>"), "tag <a b=1>");
    EXPECT_EQ(fault_in_xml("<a b=\"<\"></a>"), "tag <a b=\"<\">");
    EXPECT_EQ(fault_in_xml("<a>x & y</a>"), "text x & y");
    EXPECT_EQ(fault_in_xml("<a></a><b></b>"), "more than one root");
}

TEST(a_picture, without_values_says_so) {
    EXPECT_THAT(svg_of(drawn_with({})), HasSubstr(">no values came</text>"));
    EXPECT_THAT(svg_of(drawn_with(wave(3))), Not(HasSubstr("no values came")));
}

TEST(a_picture, stays_small_whatever_it_shows) {
    plot three = drawn_with({});
    three.panels.clear();
    for (int panel = 0; panel < 3; ++panel) {
        three.panels.push_back({"p", {{"x", wave(100'000)}, {"y", wave(100'000)}, {"z", wave(100'000)}}});
    }
    EXPECT_LT(svg_of(three).size(), 300'000U);
}

TEST(a_picture, has_each_number_finite) {
    for (const auto& points : {wave(1), wave(2), std::vector{point(0, 3e38F), point(1, -3e38F)},
                               std::vector{point(0, 0), point(0, 0)}}) {
        plot one = drawn_with(points);
        one.seconds = 0;
        const std::string svg = svg_of(one);
        EXPECT_THAT(svg, Not(HasSubstr("nan")));
        EXPECT_THAT(svg, Not(HasSubstr("inf")));
    }
}

} // namespace
