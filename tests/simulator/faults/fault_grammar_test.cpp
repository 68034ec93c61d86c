// How faults are written, and what is said about one that is written wrong.
#include "simulator/faults/faults.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>

namespace {

using namespace vantu::orvanta::simulator;
using vantu::orvanta::communication::direction;

std::string complaint_about(fault_kind kind, std::string_view text) {
    try {
        (void)parse_fault(kind, text);
    } catch (const std::invalid_argument& wrong) {
        return wrong.what();
    }
    return "none";
}

TEST(fault_grammar, reads_an_argument_and_all_selectors) {
    const fault_rule rule = parse_fault(fault_kind::truncate, " 17 @ op = 66 , dir=out, p=0.5 ");
    EXPECT_EQ(rule.kind, fault_kind::truncate);
    EXPECT_EQ(rule.first, 17U);
    EXPECT_EQ(rule.code, 66);
    EXPECT_EQ(rule.way, direction::to_client);
    EXPECT_EQ(rule.probability, 0.5);
    EXPECT_EQ(rule.nth, 0U);
    EXPECT_FALSE(rule.now);
}

TEST(fault_grammar, reads_operations_by_name) {
    EXPECT_EQ(parse_fault(fault_kind::drop, "@op=cursor_state").code, 33);
    EXPECT_EQ(parse_fault(fault_kind::drop, "@op=0x21").code, 33);
}

TEST(fault_grammar, takes_a_number_for_the_probability_of_a_fault_without_argument) {
    EXPECT_EQ(parse_fault(fault_kind::drop, "0.05").probability, 0.05);
    EXPECT_EQ(parse_fault(fault_kind::drop, "0.05@op=33").probability, 0.05);
    EXPECT_EQ(parse_fault(fault_kind::drop, "").probability, 1);
}

TEST(fault_grammar, reads_spans_statuses_tags_and_device_types) {
    const fault_rule delay = parse_fault(fault_kind::delay, "20-80");
    EXPECT_EQ(delay.first, 20U);
    EXPECT_EQ(delay.last, 80U);
    const fault_rule error = parse_fault(fault_kind::error, "0xD0:7@op=64");
    EXPECT_EQ(error.first, 0xD0U);
    EXPECT_EQ(error.last, 7U);
    EXPECT_EQ(parse_fault(fault_kind::plug, "palmetron").first, 2U);
    EXPECT_EQ(parse_fault(fault_kind::plug, "orvanta3").first, 1U);
    EXPECT_EQ(parse_fault(fault_kind::unplug, "").first, std::nullopt);
}

TEST(fault_grammar, takes_only_what_can_be_at_once_and_has_no_selector_for_at_once) {
    EXPECT_TRUE(parse_fault(fault_kind::restart, "").now);
    EXPECT_TRUE(parse_fault(fault_kind::flood, "5000").now);
    EXPECT_FALSE(parse_fault(fault_kind::flood, "5000@n=1").now);
    EXPECT_FALSE(parse_fault(fault_kind::empty, "0.01").now);
    EXPECT_FALSE(parse_fault(fault_kind::drop, "").now);
}

TEST(fault_grammar, lets_what_would_be_at_once_wait_for_its_first_datagram_at_the_start) {
    const fault_rule rule = parse_initial_fault(fault_kind::restart, "");
    EXPECT_FALSE(rule.now);
    EXPECT_EQ(rule.nth, 1U);
    EXPECT_EQ(parse_initial_fault(fault_kind::drop, "").nth, 0U);
    EXPECT_EQ(parse_initial_fault(fault_kind::goodbye, "@op=4").nth, 0U);
}

TEST(fault_grammar, reads_the_example_of_every_row_and_its_own_text_of_it) {
    for (const fault_row& row : faults) {
        const fault_rule rule = parse_fault(row.kind, row.example);
        const std::string text = text_of(rule);
        ASSERT_TRUE(text.starts_with(row.name)) << text;
        EXPECT_EQ(parse_fault(row.kind, std::string_view(text).substr(row.name.size())), rule) << text;
    }
}

TEST(fault_grammar, writes_rules_as_they_are_read) {
    const auto rewritten = [](fault_kind kind, std::string_view text) {
        return text_of(parse_fault(kind, text));
    };
    EXPECT_EQ(rewritten(fault_kind::truncate, " 17 @ dir=out,op=config_gravity_compensation_get"),
              "truncate 17@op=66,dir=out");
    EXPECT_EQ(rewritten(fault_kind::drop, "0.05"), "drop @p=0.05");
    EXPECT_EQ(rewritten(fault_kind::drop, ""), "drop");
    EXPECT_EQ(rewritten(fault_kind::error, "208:7@n=3"), "error 0xD0:7@n=3");
    EXPECT_EQ(rewritten(fault_kind::delay, "20-80"), "delay 20-80");
    EXPECT_EQ(rewritten(fault_kind::plug, "palmetron@n=2"), "plug palmetron@n=2");
    EXPECT_EQ(rewritten(fault_kind::restart, ""), "restart");
    EXPECT_EQ(rewritten(fault_kind::restart, "@p=1"), "restart @p=1");
}

TEST(fault_grammar, finds_faults_by_their_whole_name) {
    for (const fault_row& row : faults) {
        EXPECT_EQ(find_fault(row.name), &row);
    }
    EXPECT_EQ(find_fault("dro"), nullptr);
    EXPECT_EQ(find_fault(""), nullptr);
}

struct wrong_fault {
    fault_kind kind;
    const char* text;
    const char* complaint;
};

TEST(fault_grammar, says_what_is_wrong_and_what_would_be_right) {
    const wrong_fault wrongs[]{
        {fault_kind::drop, "1.5",
         "drop: '1.5' is no probability; it takes a number from 0 to 1, as in 'drop 0.05'"},
        {fault_kind::drop, "nan",
         "drop: 'nan' is no probability; it takes a number from 0 to 1, as in 'drop 0.05'"},
        {fault_kind::drop, "0.5@p=0.5",
         "drop: the probability is given twice; once is enough, as in 'drop 0.05'"},
        {fault_kind::drop, "0.5@n=2",
         "drop: n and a probability exclude each other; take one of them, as in 'drop 0.05'"},
        {fault_kind::drop, "@", "drop: '' is no selector; it takes op=, dir=, n= or p=, as in 'drop 0.05'"},
        {fault_kind::drop, "@port=3",
         "drop: 'port=3' is no selector; it takes op=, dir=, n= or p=, as in 'drop 0.05'"},
        {fault_kind::drop, "@op=1,op=2", "drop: op is given twice; once is enough, as in 'drop 0.05'"},
        {fault_kind::drop, "@op=cursor_stat",
         "drop: 'cursor_stat' is no operation; op takes a code from 0 to 255 or a name; cursor_state "
         "would be right, as in 'drop 0.05'"},
        {fault_kind::drop, "@op=256",
         "drop: '256' is no operation; op takes a code from 0 to 255 or a name, as in 'drop 0.05'"},
        {fault_kind::drop, "@n=0",
         "drop: '0' is no count of datagrams; n takes a whole number from 1, as in 'drop 0.05'"},
        {fault_kind::drop, "@dir=up",
         "drop: 'up' is no direction; dir takes in (from clients) or out (to clients), as in 'drop 0.05'"},
        {fault_kind::late, "5@dir=in",
         "late: it can only happen to datagrams to clients; dir takes out, as in 'late 250@op=66'"},
        {fault_kind::refuse, "178@dir=out",
         "refuse: it can only happen to datagrams from clients; dir takes in, as in 'refuse 0xB2'"},
        {fault_kind::truncate, "",
         "truncate: it lacks its argument; say it before any '@', as in 'truncate 17@op=66'"},
        {fault_kind::truncate, "65508",
         "truncate: '65508' is no number of bytes; it takes a whole number from 0 to 65507, as in 'truncate "
         "17@op=66'"},
        {fault_kind::short_acceptance, "8",
         "short-acceptance: '8' is no number of bytes; it takes a whole number from 0 to 7, as in "
         "'short-acceptance 3'"},
        {fault_kind::duplicate, "0",
         "duplicate: '0' is no count; it takes a whole number from 1 to 100000, as in 'duplicate 1@p=0.1'"},
        {fault_kind::delay, "80-20",
         "delay: '80-20' ends before it begins; the smaller number comes first, as in 'delay 20-80'"},
        {fault_kind::refuse, "256",
         "refuse: '256' is no status; it takes a whole number from 0 to 255, as in 'refuse 0xB2'"},
        {fault_kind::error, "1:2:3",
         "error: '2:3' is no status or tag; it takes a whole number from 0 to 255, as in 'error 0xD0@op=64'"},
        {fault_kind::plug, "mouse",
         "plug: 'mouse' is no type of device; it takes orvanta3 or palmetron, as in 'plug orvanta3@n=9'"},
        {fault_kind::retag, "-1",
         "retag: '-1' is no tag; it takes a whole number from 0 to 255, as in 'retag 9@op=66'"},
        {fault_kind::readdress, "1 2",
         "readdress: '1 2' is no device id; it takes a whole number from 0 to 4294967295, as in 'readdress "
         "77@op=66'"},
    };
    for (const wrong_fault& wrong : wrongs) {
        EXPECT_EQ(complaint_about(wrong.kind, wrong.text), wrong.complaint) << wrong.text;
    }
}

} // namespace
