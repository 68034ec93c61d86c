// The effects of the verbs on a simulation, and the messages about a wrong one.
#include "simulator/simulation/verbs.hpp"

#include "simulator/fixtures/simulation_fixture.hpp"
#include "simulator/simulation/verb_syntax.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <regex>

namespace {

using namespace orvanta_tests;
using namespace vantu::orvanta::simulator;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const bytes device_2_added =
    datagram({{0xFF, 0x10, 0x18, 0x00, 0x00, 0x02, 0x00, 0x00, 0x00, 0x01, 0x00, 0x02, 0x30, 0x6E, 0x2B,
               0x84, 0x10, 0x5F, 0x3C, 0x4D, 0x71, 0x9A, 0x03, 0xC5, 0x38, 0x00, 0x00, 0x00, 0x02},
              {0xFF, 0x17, 0x0D, 0x00, 0x00, 0x02, 0x00, 0x00, 0x00, 0x02, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
               0x02, 0x01}});

// Runs a verb that must be good and returns what it shows.
std::string shown_by(simulation& target, std::string_view line) {
    const verb_result result = run_verb(target, line);
    EXPECT_TRUE(result.good) << line << ": " << result.text;
    EXPECT_FALSE(result.quit) << line;
    return result.text;
}

// Runs a verb that must be wrong and returns what is wrong with it.
std::string complaint_of(simulation& target, std::string_view line) {
    const verb_result result = run_verb(target, line);
    EXPECT_FALSE(result.good) << line;
    return result.text;
}

TEST(verbs, do_nothing_for_an_empty_line_and_a_comment) {
    simulation_fixture fixture;
    for (const char* line : {"", "   ", "\t", "# drop 1", "#"}) {
        EXPECT_EQ(shown_by(fixture.tested, line), "");
        EXPECT_EQ(check_verb(line), "");
    }
    EXPECT_THAT(fixture.tested.faults().rules(), IsEmpty());
}

TEST(verbs, plug_and_unplug_devices_and_tell_the_clients) {
    simulation_fixture fixture;
    fixture.enter(1);
    EXPECT_EQ(shown_by(fixture.tested, "plug orvanta3"), "plugged in 2\n");
    EXPECT_THAT(fixture.take(), ElementsAre(sent{1, device_2_added}));
    EXPECT_EQ(shown_by(fixture.tested, "unplug 2"), "unplugged 2\n");
    EXPECT_THAT(fixture.take(),
                ElementsAre(sent{1, datagram({{0xFF, 0x11, 0x04, 0x00, 0x00, 0x02, 0, 0, 0}})}));
    EXPECT_EQ(shown_by(fixture.tested, "unplug"), "unplugged 1\n");
    EXPECT_EQ(shown_by(fixture.tested, "unplug"), "unplugged 1001\n");
    EXPECT_EQ(shown_by(fixture.tested, "plug palmetron"), "plugged in 1001\n");
}

TEST(verbs, say_which_devices_there_are_where_one_is_not) {
    simulation_fixture fixture;
    EXPECT_EQ(complaint_of(fixture.tested, "unplug 9"), "there is no device 9; 1 or 1001 would be right");
    EXPECT_EQ(complaint_of(fixture.tested, "set 9 torque on"),
              "there is no device 9; 1 or 1001 would be right");
    shown_by(fixture.tested, "unplug");
    shown_by(fixture.tested, "unplug");
    EXPECT_EQ(complaint_of(fixture.tested, "unplug"),
              "there is no device 1, nor any other; 'plug orvanta3' brings one");
}

TEST(verbs, plug_no_more_devices_than_there_can_be) {
    simulation_fixture fixture;
    for (int i = 2; i <= 256; ++i) {
        EXPECT_EQ(shown_by(fixture.tested, "plug orvanta3"), "plugged in " + std::to_string(i) + '\n');
    }
    EXPECT_EQ(complaint_of(fixture.tested, "plug orvanta3"),
              "there can be no more devices of this type; 'unplug' makes room");
}

TEST(verbs, set_what_a_client_then_reads) {
    simulation_fixture fixture;
    fixture.enter(1, {1});
    shown_by(fixture.tested, "set 1 gravity off 0.5");
    shown_by(fixture.tested, "set 1 torque off");
    fixture.take();
    EXPECT_THAT(fixture.send(1, request_of(0x42, 3, 1)),
                ElementsAre(sent{1, request_of(0x42, 3, 1, {0x00, 0x00, 0x00, 0x00, 0x3F})}));
    EXPECT_THAT(fixture.send(1, request_of(0x44, 4, 1)),
                ElementsAre(sent{1, request_of(0x44, 4, 1, {0x00})}));
    shown_by(fixture.tested, "set 1 gravity on");
    fixture.take();
    EXPECT_THAT(fixture.send(1, request_of(0x42, 3, 1)),
                ElementsAre(sent{1, request_of(0x42, 3, 1, {0x01, 0x00, 0x00, 0x00, 0x3F})}));
    shown_by(fixture.tested, "set 1 handedness left");
    EXPECT_EQ(fixture.tested.devices().front().settings.handedness, 2);
    EXPECT_EQ(complaint_of(fixture.tested, "set 1001 torque on"),
              "device 1001 is a Palmetron, which has no settings; an Orvanta3 would be right");
}

TEST(verbs, add_rules_and_heal_them) {
    simulation_fixture fixture;
    shown_by(fixture.tested, "drop 0.3");
    shown_by(fixture.tested, "truncate 17@op=66");
    EXPECT_EQ(fixture.tested.faults().rules().size(), 2U);
    shown_by(fixture.tested, "heal drop");
    ASSERT_EQ(fixture.tested.faults().rules().size(), 1U);
    EXPECT_EQ(text_of(fixture.tested.faults().rules().front().rule), "truncate 17@op=66");
    shown_by(fixture.tested, "heal");
    EXPECT_THAT(fixture.tested.faults().rules(), IsEmpty());
}

TEST(verbs, heal_and_change_rules_by_name_and_number) {
    simulation_fixture fixture;
    shown_by(fixture.tested, "drop 0.3@as=loss");
    shown_by(fixture.tested, "drop @op=1");
    shown_by(fixture.tested, "drop 0.1@as=loss");
    EXPECT_THAT(shown_by(fixture.tested, "status"), HasSubstr("faults 2\n"
                                                              "  loss drop 0.1: fits 0, happened 0\n"
                                                              "  2 drop @op=1: fits 0, happened 0\n"));
    EXPECT_EQ(complaint_of(fixture.tested, "heal lost"),
              "heal: there is no rule 'lost'; 'heal loss' would be right");
    EXPECT_EQ(complaint_of(fixture.tested, "heal 3"), "heal: there is no rule '3'; 'heal' would be right");
    EXPECT_EQ(complaint_of(fixture.tested, "heal dorp"),
              "heal: there is no rule 'dorp'; 'heal drop' would be right");
    EXPECT_EQ(complaint_of(fixture.tested, "heal tomorrow"),
              "heal: there is no rule 'tomorrow'; 'heal' would be right");
    shown_by(fixture.tested, "heal 2");
    shown_by(fixture.tested, "heal loss");
    EXPECT_THAT(fixture.tested.faults().rules(), IsEmpty());
}

TEST(faults, are_told_of_one_by_one_where_the_service_is_narrated) {
    simulation_fixture fixture;
    const peer from{vantu::orvanta::resolve_address("127.0.0.1", "54321").address, 0};
    const bytes connect = datagram({connect_operation(0)});
    fixture.tested.receive(from, std::as_bytes(std::span(connect)));
    shown_by(fixture.tested, "drop @op=19");
    const bytes open = open_request(1, 1);
    fixture.tested.receive(from, std::as_bytes(std::span(open)));
    EXPECT_THAT(fixture.lines,
                testing::Contains("drop @op=19: lost device_opened tag=1 device_id=1 to client "
                                  "127.0.0.1:54321"));
}

TEST(verbs, act_at_once_on_those_who_are_connected) {
    simulation_fixture fixture;
    EXPECT_EQ(complaint_of(fixture.tested, "error 0xC0:9"),
              "nobody is connected; 'error 0xC0:9@nth=1' would wait for the first datagram");
    fixture.enter(1);
    fixture.enter(2);
    shown_by(fixture.tested, "error 0xC0:9");
    EXPECT_THAT(fixture.take(), ElementsAre(sent{1, refusal(9, 0, 0xC0)}, sent{2, refusal(9, 0, 0xC0)}));
    shown_by(fixture.tested, "goodbye");
    EXPECT_THAT(fixture.take(),
                ElementsAre(sent{1, goodbye_of_the_service}, sent{2, goodbye_of_the_service}));
    EXPECT_THAT(fixture.tested.clients(), IsEmpty());
}

TEST(verbs, restart_the_service_without_a_word) {
    simulation_fixture fixture;
    fixture.enter(1, {1});
    shown_by(fixture.tested, "set 1 handedness left");
    fixture.take();
    shown_by(fixture.tested, "restart");
    EXPECT_THAT(fixture.take(), IsEmpty());
    EXPECT_THAT(fixture.tested.clients(), IsEmpty());
    EXPECT_EQ(fixture.tested.devices().front().settings.handedness, 1);
}

TEST(verbs, end_the_simulation_by_quit_alone) {
    simulation_fixture fixture;
    const verb_result result = run_verb(fixture.tested, " quit ");
    EXPECT_TRUE(result.good);
    EXPECT_TRUE(result.quit);
}

TEST(verbs, leave_waiting_to_their_reader) {
    simulation_fixture fixture;
    EXPECT_EQ(shown_by(fixture.tested, "wait 250"), "");
    EXPECT_EQ(fixture.tested.now_ns(), 0);
}

TEST(verbs, show_the_state) {
    simulation_settings settings;
    settings.seed = 42;
    simulation_fixture fixture(std::move(settings));
    const peer from{vantu::orvanta::resolve_address("127.0.0.1", "54321").address, 0};
    const bytes connect = datagram({connect_operation(0)});
    fixture.tested.receive(from, std::as_bytes(std::span(connect)));
    const bytes open = open_request(1, 1);
    fixture.tested.receive(from, std::as_bytes(std::span(open)));
    fixture.take();
    shown_by(fixture.tested, "drop @op=1,nth=1");
    fixture.tested.receive(from, std::as_bytes(std::span(keep_alive)));
    shown_by(fixture.tested, "unplug 1001");
    fixture.take();
    (void)fixture.wait(1500 * ns_per_millisecond);
    const std::string id = std::to_string(fixture.tested.clients().front().id);
    const std::string sent_count = std::to_string(fixture.tested.counters().sent);
    EXPECT_EQ(shown_by(fixture.tested, "status"),
              "seed 42, tick 15000, 1.500 s\n"
              "datagrams received 3, sent " +
                  sent_count +
                  "; restarts 0\n"
                  "clients 1\n"
                  "  1 client " +
                  id +
                  " 'tester' at 127.0.0.1:54321, opened 1, heard 1.500 s ago\n"
                  "devices 1\n"
                  "  1 orvanta3 3001, gravity compensation on 0.75, torque scaling on, right-handed\n"
                  "faults 1\n"
                  "  1 drop @op=1,nth=1: fits 1, happened 1\n"
                  "drop happened 1 in all\n"
                  "unplug happened 1 in all\n");
}

TEST(verbs, are_explained_each_and_listed_on_one_screen) {
    simulation_fixture fixture;
    const std::string all = shown_by(fixture.tested, "help");
    EXPECT_LE(std::count(all.begin(), all.end(), '\n'), 24);
    const auto explain = [&](std::string_view name) {
        EXPECT_THAT(all, HasSubstr(std::string(name)));
        const std::string text = shown_by(fixture.tested, "help " + std::string(name));
        EXPECT_TRUE(text.starts_with(std::string(name))) << text;
        for (std::size_t begin = 0; begin < text.size(); begin = text.find('\n', begin) + 1) {
            EXPECT_LE(text.find('\n', begin) - begin, 100U) << text;
        }
    };
    for (const fault_row& row : faults) {
        explain(row.name);
    }
    for (const verb_row& row : verbs) {
        explain(row.name);
    }
}

TEST(verbs, have_examples_that_are_right) {
    for (const fault_row& row : faults) {
        EXPECT_EQ(check_verb(std::string(row.name) + ' ' + std::string(row.example)), "");
    }
    for (const verb_row& row : verbs) {
        EXPECT_EQ(check_verb(std::string(row.name) + ' ' + std::string(row.example)), "");
    }
}

TEST(verbs, show_an_example_of_every_setting) {
    simulation_fixture fixture;
    const std::string text = shown_by(fixture.tested, "help set");
    for (const char* line : {"set 1 gravity on 0.5", "set 1 torque off", "set 1 handedness left"}) {
        EXPECT_THAT(text, HasSubstr("\n  " + std::string(line) + '\n'));
        EXPECT_EQ(check_verb(line), "");
    }
}

TEST(verbs, are_checked_without_being_done) {
    // check_verb has no simulation to do anything to; it says what run_verb would.
    simulation_fixture fixture;
    for (const char* line :
         {"dorp 0.3", "drop 3", "set", "set 1", "retag 9", "wait", "quit now", "help me"}) {
        EXPECT_EQ(check_verb(line), complaint_of(fixture.tested, line)) << line;
        EXPECT_NE(check_verb(line), "") << line;
    }
}

TEST(verbs, show_no_control_character_of_a_wrong_line) {
    simulation_fixture fixture;
    const char* const line = "dr\x1B[1mop\x7F 0.3";
    constexpr auto complaint = "there is no verb 'dr?[1mop?'; 'help' lists them all";
    EXPECT_EQ(check_verb(line), complaint);
    EXPECT_EQ(complaint_of(fixture.tested, line), complaint);
    // Whether there is such a rule is known when the verb is done.
    EXPECT_EQ(complaint_of(fixture.tested, "heal lo\x1B[1mss"),
              "heal: there is no rule 'lo?[1mss'; 'heal' would be right");
}

TEST(verbs, say_what_is_wrong_and_what_would_be_right) {
    const std::pair<const char*, const char*> wrongs[]{
        {"dorp 0.3", "there is no verb 'dorp'; 'drop 0.3' would be right; 'help' lists them all"},
        {"statsu", "there is no verb 'statsu'; 'status' would be right; 'help' lists them all"},
        {"trunkate",
         "there is no verb 'trunkate'; 'truncate 17@op=66' would be right; 'help' lists them all"},
        {"tomorrow", "there is no verb 'tomorrow'; 'help' lists them all"},
        {"drop 3", "drop: '3' is no probability, a number from 0 to 1; 'drop 0.05' would be right"},
        {"plug", "plug: it lacks its argument, before any '@'; 'plug orvanta3@nth=9' would be right"},
        {"set", "set: '' is no device id; a whole number would be right, as in 'set 1 gravity on 0.5'"},
        {"set 1 gravty on", "set: 'gravty' is no setting; gravity, torque or handedness would be right, as "
                            "in 'set 1 torque off'"},
        {"set 1 gravity", "gravity: '' is neither on nor off, as in 'set 1 gravity off'"},
        {"set 1 gravity on 1.5",
         "gravity: '1.5' is no scaling factor; it takes a number from 0 to 1, as in 'set 1 gravity on 0.5'"},
        {"set 1 gravity on 0.5 now", "gravity: 'now' is too much; the line ends before it"},
        {"set 1 torque maybe", "torque: 'maybe' is neither on nor off, as in 'set 1 torque off'"},
        {"set 1 handedness both",
         "handedness: 'both' is neither left nor right, as in 'set 1 handedness left'"},
        {"wait soon", "wait: 'soon' is no time; it takes milliseconds from 0 to 86400000, as in 'wait 250'"},
        {"wait 86400001",
         "wait: '86400001' is no time; it takes milliseconds from 0 to 86400000, as in 'wait 250'"},
        {"help me", "help: 'me' is no verb; 'help' alone would be right"},
        {"help dorp", "help: 'dorp' is no verb; 'help drop' or 'help' alone would be right"},
        {"quit now", "quit: 'now' is too much; the line ends before it"},
    };
    const std::regex right("(as in|;) '([^']*)'( would be right|$)");
    for (const auto& [line, complaint] : wrongs) {
        const std::string said = check_verb(line);
        EXPECT_EQ(said, complaint) << line;
        std::smatch shown;
        if (std::regex_search(said, shown, right)) {
            EXPECT_EQ(check_verb(shown[2].str()), "") << said;
        }
    }
}

} // namespace
