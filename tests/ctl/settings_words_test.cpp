// The words of get and set, and the values that they stand for.
#include "ctl/report/exit_status.hpp"
#include "ctl/settings/words.hpp"

#include <gtest/gtest.h>
#include <limits>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace {

using namespace vantu::orvanta;
using namespace vantu::orvanta::ctl;
using words = std::vector<std::string>;

template <typename Read> std::string refusal(Read read) {
    try {
        (void)read();
        return "read";
    } catch (const failure_with_status& why) {
        EXPECT_EQ(why.status(), exit_status::wrong_usage);
        return why.what();
    }
}

std::string refusal_of_get(const words& given) {
    return refusal([&] { return keys_in(given); });
}

std::string refusal_of_set(const words& given) {
    return refusal([&] { return assignments_in(given); });
}

// The bits of the factor that a text stands for.
std::optional<float> factor(const std::string& text) {
    const auto read = value_of(value_kind::fraction, text);
    return read ? std::optional(std::get<float>(*read)) : std::nullopt;
}

TEST(keys_of_a_device, are_these) {
    words names;
    words settable;
    for (const key_row& row : keys()) {
        names.emplace_back(row.name);
        if (row.can_be_set) {
            settable.emplace_back(row.name);
        }
        EXPECT_EQ(find_key(row.name), &row);
        EXPECT_FALSE(row.meaning.empty());
    }
    EXPECT_EQ(names, (words{"orientation", "gravity-compensation", "scaling-factor", "torque-scaling",
                            "handedness", "motor-current", "power-supply"}));
    EXPECT_EQ(settable, (words{"gravity-compensation", "scaling-factor", "torque-scaling", "handedness"}));
}

TEST(keys_of_a_device, have_words_that_can_all_be_set) {
    for (const key_row& row : keys()) {
        for (const std::string_view word : words_of(row.kind)) {
            const auto read = value_of(row.kind, word);
            ASSERT_TRUE(read) << row.name << ' ' << word;
            EXPECT_EQ(text_of(*read), word);
        }
    }
}

TEST(keys_to_get, are_all_without_a_word_and_else_those_given_in_their_order) {
    EXPECT_EQ(keys_in({}).size(), keys().size());
    EXPECT_EQ(keys_in({"power-supply", "orientation"}), (std::vector{key::power_supply, key::orientation}));
}

TEST(keys_to_get, are_refused_when_unknown_or_given_twice) {
    EXPECT_EQ(refusal_of_get({"handedness", "hand"}),
              "no key is called 'hand'; the keys are: orientation, gravity-compensation, scaling-factor, "
              "torque-scaling, handedness, motor-current, power-supply");
    EXPECT_EQ(refusal_of_get({"Handedness"}).substr(0, 31), "no key is called 'Handedness'; ");
    EXPECT_EQ(refusal_of_get({"handedness", "handedness"}), "handedness is given twice");
}

TEST(assignments, are_read_into_values) {
    const value_set read = assignments_in(
        {"handedness=left", "scaling-factor=0.25", "torque-scaling=off", "gravity-compensation=on"});
    EXPECT_EQ(read.size(), 4U);
    EXPECT_EQ(std::get<bool>(read.at(key::gravity_compensation)), true);
    EXPECT_EQ(std::get<float>(read.at(key::scaling_factor)), 0.25F);
    EXPECT_EQ(std::get<bool>(read.at(key::torque_scaling)), false);
    EXPECT_EQ(std::get<handedness>(read.at(key::handedness)), handedness::left);
}

TEST(assignments, are_refused_as_a_whole_when_one_is_wrong) {
    EXPECT_EQ(refusal_of_set({"torque-scaling=on", "scaling-factor"}),
              "'scaling-factor' is no KEY=VALUE, such as scaling-factor=0.5");
    EXPECT_EQ(refusal_of_set({"torque-scaling=on", "factor=1"}),
              "no key is called 'factor'; the keys are: gravity-compensation, scaling-factor, "
              "torque-scaling, handedness");
    EXPECT_EQ(refusal_of_set({"orientation=1"}),
              "orientation cannot be set; these keys can: gravity-compensation, scaling-factor, "
              "torque-scaling, handedness");
    EXPECT_EQ(refusal_of_set({"torque-scaling=on", "scaling-factor=1.5"}),
              "scaling-factor is a number from 0 to 1, not '1.5'");
    EXPECT_EQ(refusal_of_set({"torque-scaling=true"}), "torque-scaling is on or off, not 'true'");
    EXPECT_EQ(refusal_of_set({"handedness=none"}), "handedness is left or right, not 'none'");
    EXPECT_EQ(refusal_of_set({"handedness="}), "handedness is left or right, not ''");
    EXPECT_EQ(refusal_of_set({"torque-scaling=on", "torque-scaling=on"}), "torque-scaling is given twice");
}

TEST(a_scaling_factor, is_a_number_from_0_to_1) {
    EXPECT_EQ(factor("0"), 0.0F);
    EXPECT_EQ(factor("1"), 1.0F);
    EXPECT_EQ(factor("0.1"), 0.1F);
    EXPECT_EQ(factor("5e-1"), 0.5F);
    EXPECT_FALSE(std::signbit(factor("-0").value()));
    for (const char* wrong : {"", " 1", "1 ", "+1", "0,5", "1.00000001", "-0.1", "nan", "inf", "1e999",
                              "1e-999", "0x1", "one", "0.5%"}) {
        EXPECT_EQ(factor(wrong), std::nullopt) << wrong;
    }
}

TEST(a_value, has_the_shortest_text_and_number_that_read_back_the_same) {
    for (const float number : {0.1F, 0.75F, 1.0F, 0.0F, 0.333333343F, 1e-7F}) {
        EXPECT_EQ(factor(text_of(number)), number);
        EXPECT_EQ(static_cast<float>(json_of(number).get<double>()), number);
    }
    EXPECT_EQ(text_of(0.1F), "0.1");
    EXPECT_EQ(json_of(0.1F).dump(), "0.1");
    EXPECT_EQ(text_of(orientation{1, 0.5F, -0.25F, 0}), "1 0.5 -0.25 0");
    EXPECT_EQ(json_of(orientation{1, 0.5F, -0.25F, 0}).dump(), R"({"r":1.0,"x":0.5,"y":-0.25,"z":0.0})");
    EXPECT_EQ(json_of(std::array<float, 3>{1, 0.1F, 3}).dump(), "[1.0,0.1,3.0]");
    EXPECT_EQ(text_of(std::uint8_t{200}), "200");
    EXPECT_EQ(json_of(true).dump(), "true");
    EXPECT_EQ(json_of(handedness::left).dump(), R"("left")");
}

TEST(a_value, that_is_no_number_is_null_in_json) {
    const float no_number = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(text_of(no_number), "nan");
    EXPECT_EQ(json_of(no_number).dump(), "null");
    EXPECT_EQ(json_of(std::numeric_limits<float>::infinity()).dump(), "null");
}

} // namespace
