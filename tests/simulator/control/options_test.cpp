// The command line, without a program around it.
#include "simulator/control/options.hpp"

#include "simulator/control/scenario.hpp"
#include "simulator/service/configuration_json.hpp"
#include "simulator/simulation/verb_syntax.hpp"

#include <gmock/gmock.h>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta::simulator;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

parse_outcome parse(std::vector<const char*> arguments) {
    arguments.insert(arguments.begin(), "orvanta-simulator");
    return parse_options(static_cast<int>(arguments.size()), arguments.data());
}

TEST(options, have_defaults) {
    const parse_outcome outcome = parse({});
    EXPECT_EQ(outcome.verdict, parse_verdict::run);
    EXPECT_EQ(outcome.chosen.port, "54320");
    EXPECT_EQ(outcome.chosen.orvanta3_count, 1U);
    EXPECT_EQ(outcome.chosen.palmetron_count, 1U);
    EXPECT_EQ(outcome.chosen.announce, announce_order::before);
    EXPECT_FALSE(outcome.chosen.single_client);
    EXPECT_EQ(outcome.chosen.rate_hz, 100);
    EXPECT_EQ(outcome.chosen.state_path, "");
    EXPECT_FALSE(outcome.chosen.verbose);
    EXPECT_FALSE(outcome.chosen.seed);
    EXPECT_EQ(outcome.chosen.scenario_path, "");
    EXPECT_FALSE(outcome.chosen.interactive);
    EXPECT_FALSE(outcome.chosen.counts_devices);
    EXPECT_THAT(outcome.chosen.faults, IsEmpty());
}

TEST(options, are_taken) {
    const parse_outcome outcome =
        parse({"--port", "0", "--orvanta3", "256", "--palmetron=0", "--announce", "after", "--single-client",
               "--rate", "0.5", "--state", "a file", "--verbose", "--seed", "18446744073709551615",
               "--scenario", "another file", "--interactive"});
    EXPECT_EQ(outcome.verdict, parse_verdict::run);
    EXPECT_EQ(outcome.chosen.port, "0");
    EXPECT_EQ(outcome.chosen.orvanta3_count, 256U);
    EXPECT_EQ(outcome.chosen.palmetron_count, 0U);
    EXPECT_EQ(outcome.chosen.announce, announce_order::after);
    EXPECT_TRUE(outcome.chosen.single_client);
    EXPECT_EQ(outcome.chosen.rate_hz, 0.5);
    EXPECT_EQ(outcome.chosen.state_path, "a file");
    EXPECT_TRUE(outcome.chosen.verbose);
    EXPECT_EQ(outcome.chosen.seed, 18446744073709551615U);
    EXPECT_EQ(outcome.chosen.scenario_path, "another file");
    EXPECT_TRUE(outcome.chosen.interactive);
    EXPECT_TRUE(outcome.chosen.counts_devices);
}

TEST(options, know_whether_the_devices_were_counted) {
    EXPECT_TRUE(parse({"--orvanta3", "1"}).chosen.counts_devices);
    EXPECT_TRUE(parse({"--palmetron", "1"}).chosen.counts_devices);
    EXPECT_FALSE(parse({"--seed", "010"}).chosen.counts_devices);
}

TEST(options, take_a_seed_as_decimal) {
    EXPECT_EQ(parse({"--seed", "010"}).chosen.seed, 10U);
    EXPECT_EQ(parse({"--seed=0"}).chosen.seed, 0U);
}

// The texts of the rules, as the grammar writes them.
std::vector<std::string> faults_of(const std::vector<const char*>& arguments) {
    const parse_outcome outcome = parse(arguments);
    EXPECT_EQ(outcome.verdict, parse_verdict::run) << outcome.text;
    std::vector<std::string> texts;
    for (const fault_rule& rule : outcome.chosen.faults) {
        texts.push_back(text_of(rule));
    }
    return texts;
}

TEST(options, take_faults_in_the_order_of_the_command_line) {
    EXPECT_THAT(faults_of({"--drop", "0.5", "--truncate=17@op=66", "--drop", "--port", "0", "--drop=@n=3"}),
                ElementsAre("drop @p=0.5", "truncate 17@op=66", "drop", "drop @n=3"));
}

TEST(options, let_what_could_happen_at_once_wait_for_a_datagram) {
    const auto chosen = parse({"--restart", "--silence", "20", "--goodbye", "@op=4"}).chosen;
    ASSERT_EQ(chosen.faults.size(), 3U);
    for (const fault_rule& rule : chosen.faults) {
        EXPECT_FALSE(rule.now);
    }
    EXPECT_EQ(chosen.faults[0].nth, 1U);
    EXPECT_EQ(chosen.faults[1].nth, 1U);
    EXPECT_EQ(chosen.faults[1].first, 20U);
    EXPECT_EQ(chosen.faults[2].nth, 0U);
}

TEST(options, take_the_example_of_every_fault) {
    for (const fault_row& row : faults) {
        const std::string name = "--" + std::string(row.name);
        const parse_outcome outcome = parse({name.c_str(), row.example.data()});
        EXPECT_EQ(outcome.verdict, parse_verdict::run) << outcome.text;
        ASSERT_EQ(outcome.chosen.faults.size(), 1U);
        EXPECT_EQ(outcome.chosen.faults[0], parse_initial_fault(row.kind, row.example)) << name;
    }
}

TEST(options, that_are_wrong_are_told_in_one_line_that_names_them) {
    const std::vector<std::vector<const char*>> wrong{
        {"--port", "65536"},
        {"--port", "-1"},
        {"--port", "x"},
        {"--port", ""},
        {"--port"},
        {"--orvanta3", "257"},
        {"--orvanta3", "-1"},
        {"--palmetron", "1.5"},
        {"--palmetron", "257"},
        {"--announce", "now"},
        {"--rate", "-1"},
        {"--rate", "10001"},
        {"--rate", "nan"},
        {"--rate", "inf"},
        {"--rate", "fast"},
        {"--state", ""},
        {"--state"},
        {"--scenario", ""},
        {"--scenario"},
        {"--seed", "-1"},
        {"--seed", "0x10"},
        {"--seed", "18446744073709551616"},
        {"--seed", ""},
        {"--seed"},
        {"--drop", "2"},
        {"--truncate"},
        {"--truncate", "17@op=none"},
        {"--plug", "mouse"},
        {"--restart", "@n=0"},
        {"--help", "me"},
        {"--unknown"},
        {"stray"},
    };
    for (const auto& arguments : wrong) {
        const parse_outcome outcome = parse(arguments);
        EXPECT_EQ(outcome.verdict, parse_verdict::wrong) << arguments[0] << ' ' << arguments.back();
        EXPECT_THAT(outcome.text, HasSubstr(arguments[0]));
        EXPECT_THAT(outcome.text, Not(HasSubstr("\n")));
    }
}

TEST(options, that_are_unknown_are_told_with_the_one_that_was_probably_meant) {
    EXPECT_EQ(parse({"--dorp", "0.3"}).text,
              "--dorp: there is no such option; --drop would be right, and --help lists them all");
    EXPECT_EQ(parse({"--scenari=desk.json"}).text,
              "--scenari: there is no such option; --scenario would be right, and --help lists them all");
    EXPECT_EQ(parse({"desk.json"}).text, "'desk.json' belongs to no option; --help lists them all");
}

TEST(options, that_are_wrong_are_told_without_their_control_characters) {
    EXPECT_EQ(parse({"a\x1B[1m\x7F"}).text, "'a?[1m?' belongs to no option; --help lists them all");
    EXPECT_EQ(parse({"--help", "m\x01"}).text,
              "--help: 'm?' is no topic; faults, scenario, console or a fault's name would be right");
}

std::string shown(const std::vector<const char*>& arguments) {
    const parse_outcome outcome = parse(arguments);
    EXPECT_EQ(outcome.verdict, parse_verdict::show) << outcome.text;
    return outcome.text;
}

TEST(options, show_the_version) {
    EXPECT_EQ(shown({"--version"}), "orvanta-simulator 2.0.0\n");
}

TEST(options, show_their_help_whatever_else_is_said) {
    const std::string help = shown({"--help"});
    for (const char* name : {"--port", "--orvanta3", "--palmetron", "--announce", "--single-client", "--rate",
                             "--state", "--verbose", "--seed", "--scenario", "--interactive", "--help",
                             "--version", "--help faults", "--help scenario", "--help console"}) {
        EXPECT_THAT(help, HasSubstr(name));
    }
    EXPECT_EQ(shown({"-h"}), help);
    EXPECT_EQ(shown({"--help", "--port", "0"}), help);
    EXPECT_EQ(shown({"--port", "none", "--help"}), help);
    EXPECT_EQ(shown({"--help", "--unknown"}), help);
}

TEST(options, show_each_topic_of_the_help_on_one_screen) {
    std::vector<std::string> topics{"", "faults", "scenario", "console"};
    for (const fault_row& row : faults) {
        topics.emplace_back(row.name);
    }
    for (const verb_row& row : verbs) {
        topics.emplace_back(row.name);
    }
    for (const std::string& topic : topics) {
        std::istringstream lines(shown({"--help", topic.c_str()}));
        int count = 0;
        for (std::string line; std::getline(lines, line); ++count) {
            EXPECT_LE(line.size(), 80U) << topic << ": " << line;
        }
        EXPECT_GE(count, 2) << topic;
        EXPECT_LE(count, 23) << topic << " leaves no line for the prompt";
    }
}

TEST(options, show_every_fault_with_its_example) {
    const std::string help = shown({"--help", "faults"});
    for (const fault_row& row : faults) {
        EXPECT_THAT(help, HasSubstr("--" + std::string(row.name) + ' ' + std::string(row.example)));
        const std::string more = shown({"--help", row.name.data()});
        EXPECT_THAT(more, StartsWith(std::string(row.name) + "\n  " + std::string(row.effect) + '\n'));
        EXPECT_THAT(more, HasSubstr("--" + std::string(row.name) + ' ' + std::string(row.example) + '\n'));
    }
}

TEST(options, show_every_verb_and_every_member_and_event_of_scenarios) {
    const std::string console = shown({"--help", "console"});
    for (const verb_row& row : verbs) {
        EXPECT_THAT(console, HasSubstr("\n  " + std::string(row.name) + ' '));
    }
    for (const fault_row& row : faults) {
        EXPECT_TRUE(std::regex_search(console, std::regex("[ \n]" + std::string(row.name) + "[ \n]")))
            << row.name;
    }
    const std::string scenario = shown({"--help", "scenario"});
    for (const auto member : scenario_members::scenario) {
        EXPECT_THAT(scenario, HasSubstr('"' + std::string(member) + "\":"));
    }
    for (const auto member : scenario_members::device) {
        EXPECT_THAT(scenario, HasSubstr('"' + std::string(member) + "\":"));
    }
    for (const auto member : configuration_members) {
        EXPECT_THAT(scenario, HasSubstr('"' + std::string(member) + "\":"));
    }
    for (const auto member : scenario_members::step) {
        EXPECT_THAT(scenario, HasSubstr('"' + std::string(member) + "\":"));
    }
    for (const auto member : scenario_members::event) {
        EXPECT_THAT(scenario, HasSubstr('"' + std::string(member) + "\":"));
    }
    for (const scenario_event_row& row : scenario_events) {
        EXPECT_TRUE(std::regex_search(scenario, std::regex("after .*" + std::string(row.name)))) << row.name;
    }
}

} // namespace
} // namespace orvanta_tests
