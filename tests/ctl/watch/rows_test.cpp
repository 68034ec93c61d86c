// A sample as a line of text, CSV and JSON.
#include "ctl/watch/rows.hpp"

#include <algorithm>
#include <gtest/gtest.h>
#include <limits>
#include <nlohmann/json.hpp>

namespace {

using namespace vantu::orvanta::ctl;

observation plain() {
    observation one;
    one.seconds = 1.0401234;
    one.number = 105;
    one.stream = 1;
    one.position = {0.0401F, -0.5F, 12};
    one.velocity = {0, -0.25F, 1e-7F};
    return one;
}

observation with_news() {
    observation one = plain();
    one.news.orientation = {0.5F, 0, -0.25F, 1};
    one.news.motor_current = {0, 0.125F, -1};
    one.news.power_supply = std::uint8_t{1};
    return one;
}

TEST(a_line, has_columns) {
    EXPECT_EQ(line_of(plain()), "     1.040 s  position   0.04010  -0.50000  12.00000"
                                "  velocity   0.00000  -0.25000   0.00000\n");
    EXPECT_EQ(line_of(with_news()), "     1.040 s  position   0.04010  -0.50000  12.00000"
                                    "  velocity   0.00000  -0.25000   0.00000"
                                    "  orientation   0.50000   0.00000  -0.25000   1.00000"
                                    "  motor current   0.00000   0.12500  -1.00000  power supply 1\n");
}

TEST(a_csv_row, has_a_cell_for_each_name_of_the_header) {
    EXPECT_EQ(csv_row(with_news()),
              "1.040123,105,1,0.0401,-0.5,12,0,-0.25,1e-07,0.5,0,-0.25,1,0,0.125,-1,1\n");
    EXPECT_EQ(csv_row(plain()), "1.040123,105,1,0.0401,-0.5,12,0,-0.25,1e-07,,,,,,,,\n");
    const auto commas = [](const std::string& text) { return std::count(text.begin(), text.end(), ','); };
    EXPECT_EQ(commas(csv_header()), commas(csv_row(plain())));
    EXPECT_EQ(commas(csv_header()), commas(csv_row(with_news())));
}

TEST(a_csv_header, tells_the_units) {
    EXPECT_EQ(
        csv_header(),
        "time [s],number,stream,"
        "position x [not specified],position y [not specified],position z [not specified],"
        "velocity x [not specified],velocity y [not specified],velocity z [not specified],"
        "orientation r,orientation x,orientation y,orientation z,"
        "motor current 1 [not specified],motor current 2 [not specified],motor current 3 [not specified],"
        "power supply [not specified]\n");
}

TEST(a_json_row, has_the_keys_of_the_settings) {
    EXPECT_EQ(json_row(plain()), R"({"time":1.040123,"number":105,"stream":1,"position":[0.0401,-0.5,12],)"
                                 R"("velocity":[0,-0.25,1e-07]})"
                                 "\n");
    EXPECT_EQ(json_row(with_news()),
              R"({"time":1.040123,"number":105,"stream":1,"position":[0.0401,-0.5,12],)"
              R"("velocity":[0,-0.25,1e-07],"orientation":{"r":0.5,"x":0,"y":-0.25,"z":1},)"
              R"("motor-current":[0,0.125,-1],"power-supply":1})"
              "\n");
    EXPECT_TRUE(nlohmann::json::accept(json_row(with_news())));
}

TEST(a_json_row, is_json_whatever_the_values_are) {
    observation odd = plain();
    odd.position = {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
                    std::numeric_limits<float>::max()};
    odd.velocity = {std::numeric_limits<float>::denorm_min(), -0.0F, 0};
    const nlohmann::json read = nlohmann::json::parse(json_row(odd));
    EXPECT_TRUE(read["position"][0].is_null());
    EXPECT_TRUE(read["position"][1].is_null());
    EXPECT_EQ(static_cast<float>(read["position"][2].get<double>()), std::numeric_limits<float>::max());
}

} // namespace
