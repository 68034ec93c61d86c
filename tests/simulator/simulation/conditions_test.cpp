// Conditions: what they count, how they compare, and the messages about wrong ones.
#include "simulator/simulation/conditions.hpp"

#include "simulator/fixtures/simulation_fixture.hpp"
#include "simulator/simulation/verb_syntax.hpp"
#include "simulator/simulation/verbs.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace orvanta_tests;
using namespace vantu::orvanta::simulator;
using testing::HasSubstr;

std::string refusal_of(std::string_view text) {
    try {
        (void)parse_condition("expect", text);
        return {};
    } catch (const std::invalid_argument& wrong) {
        return wrong.what();
    }
}

TEST(conditions, count_what_the_simulation_has_seen) {
    simulation_fixture fixture;
    (void)run_verb(fixture.tested, "drop @op=64,dir=out");
    const auto count = [&](std::string_view text) {
        return parse_condition("expect", text).count(fixture.tested);
    };
    EXPECT_EQ(count("clients"), 0U);
    fixture.enter(1, {1});
    fixture.enter(2);
    (void)fixture.send(1, request_of(0x40, 3, 1));
    (void)fixture.send(1, request_of(0x40, 4, 1));
    EXPECT_EQ(count("in config_save"), 2U);
    EXPECT_EQ(count("out config_save"), 0U);
    EXPECT_EQ(count("out connected"), 2U);
    EXPECT_EQ(count("in 64"), 2U);
    EXPECT_EQ(count("happened drop"), 2U);
    EXPECT_EQ(count("happened flip"), 0U);
    EXPECT_EQ(count("clients"), 2U);
    EXPECT_EQ(count("devices"), 2U);
    (void)run_verb(fixture.tested, "plug palmetron");
    EXPECT_EQ(count("devices"), 3U);
}

TEST(conditions, compare_with_a_number_and_hold_from_one_on_without_it) {
    struct comparing {
        const char* text;
        bool holds[4]; // for 0 to 3
    };
    for (const comparing& row : {comparing{"clients", {false, true, true, true}},
                                 comparing{"clients >= 2", {false, false, true, true}},
                                 comparing{"clients = 2", {false, false, true, false}},
                                 comparing{"clients <= 2", {true, true, true, false}},
                                 comparing{"clients = 0", {true, false, false, false}}}) {
        const condition tested = parse_condition("expect", row.text);
        for (std::uint64_t counted = 0; counted < 4; ++counted) {
            EXPECT_EQ(tested.holds(counted), row.holds[counted]) << row.text << " of " << counted;
        }
    }
}

TEST(conditions, have_an_example_each_that_is_right_and_shown_by_the_help) {
    const std::string help = verb_help_text("expect");
    for (const condition_row& row : conditions) {
        EXPECT_TRUE(row.example.starts_with(row.name));
        EXPECT_EQ(refusal_of(row.example), "");
        EXPECT_EQ(check_verb("wait 5 " + std::string(row.example)), "");
        EXPECT_THAT(help, HasSubstr("\n  " + std::string(row.name) + ' '));
        EXPECT_THAT(help, HasSubstr(' ' + std::string(row.counted) + ' '));
        EXPECT_THAT(help, HasSubstr(' ' + std::string(row.example) + '\n'));
        EXPECT_THAT(verb_help_text("wait"), HasSubstr(' ' + std::string(row.example) + '\n'));
        for (const std::string_view comparison : comparisons) {
            EXPECT_EQ(refusal_of(std::string(row.name) +
                                 (row.subject.empty()      ? " "
                                  : row.subject == "FAULT" ? " drop "
                                                           : " connect ") +
                                 std::string(comparison) + " 7"),
                      row.name == "out" ? "expect: 'connect' is no operation that goes to clients; connected "
                                          "would be right"
                                        : "");
        }
    }
}

TEST(conditions, say_what_is_wrong_and_what_would_be_right) {
    EXPECT_EQ(refusal_of(""), "expect: '' is no condition; in or out or happened or clients or devices would "
                              "be right, as in 'in config_save'");
    EXPECT_EQ(refusal_of("client"), "expect: 'client' is no condition; in or out or happened or clients or "
                                    "devices would be right, as in 'in config_save'");
    EXPECT_EQ(refusal_of("in"), "expect: in lacks OPERATION; 'in config_save' would be right");
    EXPECT_EQ(refusal_of("happened"), "expect: happened lacks FAULT; 'happened drop >= 3' would be right");
    EXPECT_EQ(refusal_of("in config_svae"),
              "expect: 'config_svae' is no operation that goes to the service; config_save would be right");
    EXPECT_EQ(refusal_of("out connect"),
              "expect: 'connect' is no operation that goes to clients; connected would be right");
    EXPECT_EQ(refusal_of("happened dorp"),
              "expect: 'dorp' is no fault; one of those that 'help' lists would be right");
    const std::string right = " is no comparison; =, >= or <= and a whole number would be right, as in "
                              "'clients >= 2'";
    for (const char* wrong : {"> 1", ">= many", ">=", "= -1", ">= 1 2", "1", ">=1"}) {
        EXPECT_EQ(refusal_of("clients " + std::string(wrong)),
                  "expect: '" + std::string(wrong) + '\'' + right);
    }
    EXPECT_EQ(refusal_of("in \x1Bsave").find('\x1B'), std::string::npos);
}

TEST(expect, is_an_error_unless_the_condition_holds) {
    simulation_fixture fixture;
    const verb_result unmet = run_verb(fixture.tested, "expect in 64");
    EXPECT_FALSE(unmet.good);
    EXPECT_EQ(unmet.text, "expected in config_save >= 1; it is 0");
    fixture.enter(1, {1});
    (void)fixture.send(1, request_of(0x40, 3, 1));
    const verb_result met = run_verb(fixture.tested, "expect in 64");
    EXPECT_TRUE(met.good);
    EXPECT_EQ(met.text, "");
    EXPECT_EQ(run_verb(fixture.tested, "expect clients = 0").text, "expected clients = 0; it is 1");
}

TEST(a_wait_with_a_condition, is_checked_as_expect_is) {
    EXPECT_EQ(check_verb("wait 500 in config_save >= 2"), "");
    EXPECT_EQ(check_verb("wait 500 soon"),
              "wait: 'soon' is no condition; in or out or happened or clients or "
              "devices would be right, as in 'in config_save'");
}

} // namespace
