// How faults are written, and what is said about one that is written wrong.
#include "simulator/faults/faults.hpp"
#include "vantu/orvanta/communication/fields.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <span>
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

TEST(fault_grammar, reads_every_selector) {
    const fault_rule rule =
        parse_fault(fault_kind::drop, "0.2@op=66,dir=answer,device=1,client=2,burst=4,as=loss");
    EXPECT_EQ(rule.code, 66);
    EXPECT_EQ(rule.way, direction::to_client);
    EXPECT_TRUE(rule.answers);
    EXPECT_EQ(rule.device, 1U);
    EXPECT_EQ(rule.client, 2U);
    EXPECT_EQ(rule.probability, 0.2);
    EXPECT_EQ(rule.burst, 4U);
    EXPECT_EQ(rule.name, "loss");
    EXPECT_EQ(parse_fault(fault_kind::drop, "@every=3").every, 3U);
    EXPECT_EQ(parse_fault(fault_kind::drop, "@nth=3").nth, 3U);
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
    EXPECT_FALSE(parse_fault(fault_kind::flood, "5000@nth=1").now);
    EXPECT_FALSE(parse_fault(fault_kind::restart, "0.01").now);
    EXPECT_FALSE(parse_fault(fault_kind::flood, "5@as=flood-of-acks").now);
    EXPECT_FALSE(parse_fault(fault_kind::drop, "").now);
}

TEST(fault_grammar, lets_what_would_be_at_once_wait_for_its_first_datagram_at_the_start) {
    const fault_rule rule = initial_fault("restart");
    EXPECT_FALSE(rule.now);
    EXPECT_EQ(rule.nth, 1U);
    EXPECT_EQ(initial_fault("drop").nth, 0U);
    EXPECT_EQ(initial_fault("goodbye @op=4").nth, 0U);
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
    EXPECT_EQ(rewritten(fault_kind::drop, "0.05"), "drop 0.05");
    EXPECT_EQ(rewritten(fault_kind::drop, ""), "drop");
    EXPECT_EQ(rewritten(fault_kind::error, "208:7@nth=3"), "error 0xD0:7@nth=3");
    EXPECT_EQ(rewritten(fault_kind::delay, "20-80"), "delay 20-80");
    EXPECT_EQ(rewritten(fault_kind::plug, "palmetron@nth=2"), "plug palmetron@nth=2");
    EXPECT_EQ(rewritten(fault_kind::drop, "@p=0.05,burst=8,as=loss,client=2,device=1,dir=in"),
              "drop 0.05@dir=in,device=1,client=2,burst=8,as=loss");
    EXPECT_EQ(rewritten(fault_kind::patch, " enabled = 2 @ every=3,dir=answer"),
              "patch enabled=2@dir=answer,every=3");
    EXPECT_EQ(rewritten(fault_kind::insert, "ff57000000@op=connected"), "insert ff57000000@op=4");
    EXPECT_EQ(rewritten(fault_kind::duplicate, "1@p=0.5"), "duplicate 1@p=0.5");
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

// The line of a complaint "...; 'LINE' would be right"; empty where it has none.
std::string right_line(const std::string& complaint) {
    const std::string end = "' would be right";
    const auto begin = complaint.rfind("; '");
    return complaint.ends_with(end) && begin != std::string::npos
               ? complaint.substr(begin + 3, complaint.size() - end.size() - begin - 3)
               : "";
}

void expect_complaints(std::span<const wrong_fault> wrongs) {
    for (const wrong_fault& wrong : wrongs) {
        const std::string complaint = complaint_about(wrong.kind, wrong.text);
        EXPECT_EQ(complaint, wrong.complaint) << wrong.text;
        const std::string right = right_line(complaint);
        const fault_row* const row = find_fault(right.substr(0, right.find(' ')));
        ASSERT_TRUE(row != nullptr || right.empty()) << right;
        if (row != nullptr) {
            EXPECT_EQ(complaint_about(row->kind, right.substr(row->name.size())), "none") << right;
        }
    }
}

TEST(fault_grammar, says_what_is_wrong_and_a_line_that_is_right) {
    constexpr wrong_fault wrongs[]{
        {fault_kind::drop, "1.5",
         "drop: '1.5' is no probability, a number from 0 to 1; 'drop 0.05' would be right"},
        {fault_kind::drop, "nan",
         "drop: 'nan' is no probability, a number from 0 to 1; 'drop 0.05' would be right"},
        {fault_kind::drop, "0.5@p=0.5", "drop: p= is given twice; 'drop 0.05' would be right"},
        {fault_kind::drop, "0.5@nth=2",
         "drop: a probability, nth= and every= exclude each other; 'drop 0.05' would be right"},
        {fault_kind::drop, "@every=3,nth=2",
         "drop: a probability, nth= and every= exclude each other; 'drop 0.05' would be right"},
        {fault_kind::drop, "@",
         "drop: '' is no selector, one of op= dir= device= client= p= burst= nth= every= as=; 'drop 0.05' "
         "would be right"},
        {fault_kind::drop, "@port=3",
         "drop: 'port=3' is no selector, one of op= dir= device= client= p= burst= nth= every= as=; 'drop "
         "0.05' would be right"},
        {fault_kind::drop, "@op=1,op=2", "drop: op= is given twice; 'drop 0.05' would be right"},
        {fault_kind::drop, "@op=cursor_stat",
         "drop: there is no operation 'cursor_stat'; 'drop @op=33' would be right"},
        {fault_kind::stale, "@op=cursor_stat",
         "stale: there is no operation 'cursor_stat'; 'stale @op=19' would be right"},
        {fault_kind::drop, "@op=200", "drop: there is no operation '200'; 'drop 0.05' would be right"},
        {fault_kind::drop, "@nth=0",
         "drop: '0' is no count of datagrams, a whole number from 1; 'drop 0.05' would be right"},
        {fault_kind::drop, "@client=0",
         "drop: '0' is no client's number, a whole number from 1; 'drop 0.05' would be right"},
        {fault_kind::drop, "@dir=up",
         "drop: 'up' is no direction, in (from clients), out (to clients) or answer; 'drop 0.05' would be "
         "right"},
        {fault_kind::drop, "@burst=4",
         "drop: bursts of 4 take a probability, of 0.8 at most; 'drop 0.05@burst=4' would be right"},
        {fault_kind::drop, "0.9@burst=4",
         "drop: bursts of 4 take a probability, of 0.8 at most; 'drop 0.05@burst=4' would be right"},
        {fault_kind::drop, "@as=2",
         "drop: '2' is no name, letters, digits, - and _, and no fault's; 'drop 0.05@as=rule' would be "
         "right"},
        {fault_kind::truncate, "5@as=drop",
         "truncate: 'drop' is no name, letters, digits, - and _, and no fault's; 'truncate 17@op=66,as=rule' "
         "would be right"},
        {fault_kind::stale, "@dir=in",
         "stale: it happens to datagrams to clients alone; 'stale @op=19' would be right"},
        {fault_kind::error, "178@dir=out",
         "error: it happens to datagrams from clients alone; 'error 0xD0@op=64' would be right"},
        {fault_kind::truncate, "",
         "truncate: it lacks its argument, before any '@'; 'truncate 17@op=66' would be right"},
        {fault_kind::truncate, "65508",
         "truncate: '65508' is no number of bytes, a whole number from 0 to 65507; 'truncate 17@op=66' would "
         "be right"},
        {fault_kind::duplicate, "0",
         "duplicate: '0' is no count, a whole number from 1 to 100000; 'duplicate 1@p=0.1' would be right"},
        {fault_kind::delay, "80-20", "delay: '80-20' ends before it begins; 'delay 20-80' would be right"},
        {fault_kind::error, "1:2:3",
         "error: '2:3' is no status or tag, a whole number from 0 to 255; 'error 0xD0@op=64' would be right"},
        {fault_kind::plug, "mouse",
         "plug: 'mouse' is no type of device, orvanta3 or palmetron; 'plug orvanta3@nth=9' would be right"},
        {fault_kind::insert, "fff",
         "insert: 'fff' is no row of bytes, two hexadecimal digits each; 'insert "
         "ff57000000@op=device_info_orvanta3' would be right"},
        {fault_kind::patch, "enabled",
         "patch: 'enabled' is no FIELD=VALUE; 'patch values[2]=nan@op=cursor_state' would be right"},
        {fault_kind::patch, "client_name=a\x1B[1m",
         "patch: 'client_name=a\x1B[1m' is no FIELD=VALUE; 'patch values[2]=nan@op=cursor_state' would be "
         "right"},
        {fault_kind::patch, "enabled=on",
         "patch: enabled is 'on'; a whole number from 0 to 255 would be right"},
        {fault_kind::patch, "scaling_factor=x",
         "patch: scaling_factor is 'x'; a number, nan, inf or -inf would be right"},
    };
    expect_complaints(wrongs);
}

TEST(fault_grammar, refuses_what_no_datagram_can_fit) {
    constexpr wrong_fault wrongs[]{
        {fault_kind::truncate, "5@op=67,dir=out",
         "truncate: no datagram can fit that; 'truncate 5@op=67' would be right"},
        {fault_kind::flood, "5@op=67", "flood: no datagram can fit that; 'flood 5@p=1' would be right"},
        {fault_kind::delay, "5@op=33,dir=answer",
         "delay: no datagram can fit that; 'delay 5@op=33' would be right"},
        {fault_kind::stale, "@op=16", "stale: no datagram can fit that; 'stale' would be right"},
        {fault_kind::drop, "@op=connected,device=1",
         "drop: no datagram can fit that; 'drop @op=4' would be right"},
        {fault_kind::error, "0xD0@op=keep_alive",
         "error: no datagram can fit that; 'error 0xD0@p=1' would be right"},
        {fault_kind::cut, "9@op=68", "cut: no datagram can fit that; 'cut 9' would be right"},
        {fault_kind::patch, "enabled=2@op=config_save",
         "patch: no datagram can fit that, as config_save has header.magic header.version header.reserved "
         "op.magic op.code op.length tag device_id saved; 'patch enabled=2' would be right"},
        {fault_kind::patch, "mood=2",
         "patch: no operation has the field of 'mood=2'; 'patch values[2]=nan@op=cursor_state' would be "
         "right"},
        {fault_kind::patch, "values[6]=0",
         "patch: no operation has the field of 'values[6]=0'; 'patch values[2]=nan@op=cursor_state' would be "
         "right"},
    };
    expect_complaints(wrongs);
}

TEST(fault_grammar, takes_every_field_of_every_operation) {
    for (const auto& layout : vantu::orvanta::communication::body_layouts) {
        for (const auto& one : layout.fields) {
            if (one.type != vantu::orvanta::communication::field_type::tail) {
                const std::string text = std::string(one.name) + "=other@op=" + std::to_string(layout.code);
                EXPECT_EQ(complaint_about(fault_kind::patch, text), "none") << text;
            }
        }
    }
}

} // namespace
