// The command line, without a program around it.
#include "simulator/control/options.hpp"

#include "simulator/control/scenario.hpp"
#include "simulator/faults/faults.hpp"
#include "simulator/service/configuration_json.hpp"
#include "simulator/simulation/verb_syntax.hpp"
#include "support/scratch_folder.hpp"

#include <algorithm>
#include <fstream>
#include <gmock/gmock.h>
#include <regex>
#include <set>
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
using vantu::orvanta::service_simulator;

parse_outcome parse(std::vector<const char*> arguments) {
    arguments.insert(arguments.begin(), "orvanta-simulator");
    return parse_options(static_cast<int>(arguments.size()), arguments.data());
}

TEST(options, have_defaults) {
    const parse_outcome outcome = parse({});
    EXPECT_EQ(outcome.verdict, parse_verdict::run);
    const service_simulator::settings& simulated = outcome.chosen.simulated;
    EXPECT_FALSE(simulated.port);
    EXPECT_EQ(with_scenario(outcome.chosen).simulated.port, "54320");
    EXPECT_EQ(simulated.orvanta3_count, std::nullopt);
    EXPECT_EQ(simulated.palmetron_count, std::nullopt);
    EXPECT_FALSE(simulated.devices);
    EXPECT_FALSE(simulated.single_client);
    EXPECT_FALSE(simulated.rate_hz);
    EXPECT_EQ(simulated.state_path, "");
    EXPECT_FALSE(simulated.seed);
    EXPECT_EQ(simulated.scenario_path, "");
    EXPECT_THAT(simulated.faults, IsEmpty());
    EXPECT_FALSE(outcome.chosen.interactive);
    EXPECT_FALSE(outcome.chosen.verbose);
}

// Whether the settings have the value that the option is given here.
struct option_of_a_setting {
    const char* name;
    const char* value; // null: a flag
    bool (*is_set)(const service_simulator::settings& simulated);
};

const option_of_a_setting options_of_settings[]{
    {"--port", "7", [](const auto& set) { return set.port == "7"; }},
    {"--orvanta3", "256", [](const auto& set) { return set.orvanta3_count == 256U; }},
    {"--palmetron", "0", [](const auto& set) { return set.palmetron_count == 0U; }},
    {"--announce", "after",
     [](const auto& set) { return set.devices == service_simulator::announce::after; }},
    {"--single-client", nullptr, [](const auto& set) { return set.single_client == true; }},
    {"--rate", "0.5", [](const auto& set) { return set.rate_hz == 0.5; }},
    {"--state", "a file", [](const auto& set) { return set.state_path == "a file"; }},
    {"--seed", "18446744073709551615", [](const auto& set) { return set.seed == 18446744073709551615U; }},
    {"--capture", "a file", [](const auto& set) { return set.capture_path == "a file"; }},
    {"--scenario", "a file", [](const auto& set) { return set.scenario_path == "a file"; }},
    {"--drop", "0.5", [](const auto& set) { return set.faults == std::vector<std::string>{"drop 0.5"}; }},
};

TEST(options, become_settings_of_the_library) {
    const service_simulator::settings nothing = parse({}).chosen.simulated;
    for (const option_of_a_setting& one : options_of_settings) {
        std::vector<const char*> arguments{one.name};
        if (one.value != nullptr) {
            arguments.push_back(one.value);
        }
        const parse_outcome outcome = parse(arguments);
        EXPECT_EQ(outcome.verdict, parse_verdict::run) << outcome.text;
        EXPECT_TRUE(one.is_set(outcome.chosen.simulated)) << one.name;
        EXPECT_FALSE(one.is_set(nothing)) << one.name;
    }
    EXPECT_TRUE(parse({"--verbose"}).chosen.verbose);
    EXPECT_EQ(parse({"--trace", "-"}).chosen.trace_path, "-");
    EXPECT_TRUE(parse({"--interactive"}).chosen.interactive);
}

std::set<std::string> options_of_the_help() {
    const std::string help = parse({"--help"}).text;
    const std::regex entry("\n  (?:-h,)?--([a-z0-9-]+)");
    std::set<std::string> names;
    for (std::sregex_iterator found(help.begin(), help.end(), entry), end; found != end; ++found) {
        names.insert((*found)[1]);
    }
    return names;
}

TEST(options, are_settings_of_the_library_but_for_those_of_the_program_alone) {
    // The library has functions in the place of those for consoles, and of --verbose and --trace.
    std::set<std::string> known{"--help", "--version", "--interactive", "--control",
                                "--json", "--expect",  "--verbose",     "--trace"};
    for (const option_of_a_setting& one : options_of_settings) {
        known.insert(one.name);
    }
    const auto names = options_of_the_help();
    for (const std::string& name : names) {
        EXPECT_TRUE(known.contains("--" + name)) << name << " is no setting";
    }
    EXPECT_EQ(names.size(), known.size() - 1); // the faults are in a topic of their own
}

TEST(options, but_for_those_that_say_what_to_run_are_members_of_scenarios) {
    std::set<std::string> expected = options_of_the_help();
    for (const char* const program_alone :
         {"help", "version", "interactive", "control", "json", "expect", "scenario"}) {
        EXPECT_EQ(expected.erase(program_alone), 1U) << program_alone;
    }
    std::set<std::string> members;
    for (const std::string_view name : scenario_members::scenario) {
        std::string member(name);
        std::replace(member.begin(), member.end(), '_', '-');
        members.insert(member);
    }
    for (const char* const no_option :
         {"version", "about", "devices", "for-each-client", "steps", "faults"}) {
        EXPECT_EQ(members.erase(no_option), 1U) << no_option;
    }
    EXPECT_EQ(members, expected);
}

class options_with_a_scenario : public testing::Test {
  protected:
    options chosen(const std::string& text, std::vector<const char*> arguments) {
        std::ofstream(path) << text;
        arguments.insert(arguments.end(), {"--scenario", path.c_str()});
        const parse_outcome outcome = parse(std::move(arguments));
        EXPECT_EQ(outcome.verdict, parse_verdict::run) << outcome.text;
        return with_scenario(outcome.chosen);
    }
    const scratch_folder folder;
    const std::string path = folder.file("scenario.json");
};

TEST_F(options_with_a_scenario, take_what_is_for_the_program_from_it) {
    const options said = chosen(R"({"version": 1, "port": 7, "trace": "a file", "verbose": true})", {});
    EXPECT_FALSE(said.simulated.port) << "the library takes the scenario's";
    EXPECT_EQ(said.trace_path, "a file");
    EXPECT_TRUE(said.verbose);
    const options unsaid = chosen(R"({"version": 1})", {});
    EXPECT_EQ(unsaid.simulated.port, "54320");
    EXPECT_EQ(unsaid.trace_path, "");
    EXPECT_FALSE(unsaid.verbose);
}

TEST_F(options_with_a_scenario, go_before_it) {
    const options both = chosen(R"({"version": 1, "port": 7, "trace": "a file"})",
                                {"--port", "8", "--trace", "-", "--verbose"});
    EXPECT_EQ(both.simulated.port, "8");
    EXPECT_EQ(both.trace_path, "-");
    EXPECT_TRUE(both.verbose);
}

TEST(options, take_a_seed_as_decimal) {
    EXPECT_EQ(parse({"--seed", "010"}).chosen.simulated.seed, 10U);
    EXPECT_EQ(parse({"--seed=0"}).chosen.simulated.seed, 0U);
}

// The texts of the rules, as the grammar writes them.
std::vector<std::string> faults_of(const std::vector<const char*>& arguments) {
    const parse_outcome outcome = parse(arguments);
    EXPECT_EQ(outcome.verdict, parse_verdict::run) << outcome.text;
    return outcome.chosen.simulated.faults;
}

TEST(options, take_faults_in_the_order_of_the_command_line) {
    EXPECT_THAT(faults_of({"--drop", "0.5", "--truncate=17@op=66", "--drop", "--port", "0", "--drop=@nth=3"}),
                ElementsAre("drop 0.5", "truncate 17@op=66", "drop", "drop @nth=3"));
}

TEST(options, let_what_could_happen_at_once_wait_for_a_datagram) {
    EXPECT_THAT(faults_of({"--restart", "--silence", "20", "--goodbye", "@op=4"}),
                ElementsAre("restart @nth=1", "silence 20@nth=1", "goodbye @op=4"));
}

TEST(options, take_the_example_of_every_fault) {
    for (const fault_row& row : faults) {
        const std::string name = "--" + std::string(row.name);
        const parse_outcome outcome = parse({name.c_str(), row.example.data()});
        EXPECT_EQ(outcome.verdict, parse_verdict::run) << outcome.text;
        EXPECT_THAT(outcome.chosen.simulated.faults,
                    ElementsAre(text_of(initial_fault(name.substr(2) + ' ' + std::string(row.example)))));
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
        {"--trace", ""},
        {"--trace"},
        {"--capture", ""},
        {"--scenario", ""},
        {"--scenario"},
        {"--expect", "in config_svae"},
        {"--expect", ""},
        {"--control", ""},
        {"--seed", "-1"},
        {"--seed", "0x10"},
        {"--seed", "18446744073709551616"},
        {"--seed", ""},
        {"--seed"},
        {"--drop", "2"},
        {"--truncate"},
        {"--truncate", "17@op=none"},
        {"--plug", "mouse"},
        {"--restart", "@nth=0"},
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
              "--dorp: there is no such option; --drop would be right; --help lists them all");
    EXPECT_EQ(parse({"--scenari=desk.json"}).text,
              "--scenari: there is no such option; --scenario would be right; --help lists them all");
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

TEST(options, of_scripts_are_for_the_program) {
    const options chosen =
        parse({"--control", "desk.sock", "--json", "--expect", "in 64 >= 2", "--expect=clients = 0"}).chosen;
    EXPECT_EQ(chosen.control_path, "desk.sock");
    EXPECT_TRUE(chosen.json);
    EXPECT_THAT(chosen.expected, ElementsAre("in 64 >= 2", "clients = 0"));
    const options none = parse({}).chosen;
    EXPECT_EQ(none.control_path, "");
    EXPECT_FALSE(none.json);
    EXPECT_THAT(none.expected, IsEmpty());
}

TEST(options, show_the_version) {
    EXPECT_EQ(shown({"--version"}), "orvanta-simulator 2.0.0\n");
}

TEST(options, show_their_help_whatever_else_is_said) {
    const std::string help = shown({"--help"});
    for (const char* name :
         {"--port",        "--orvanta3",      "--palmetron",   "--announce", "--single-client", "--rate",
          "--state",       "--trace",         "--capture",     "--verbose",  "--seed",          "--scenario",
          "--interactive", "--control",       "--json",        "--expect",   "--help",          "--version",
          "--help faults", "--help scenario", "--help console"}) {
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
        const std::string example = std::string(row.name) + ' ' + std::string(row.example);
        EXPECT_THAT(help, HasSubstr("  " + example));
        const std::string more = shown({"--help", row.name.data()});
        EXPECT_THAT(more, StartsWith(std::string(row.name) + ' ' + std::string(row_of(row.argument).form) +
                                     "\n  " + std::string(row.effect) + '\n'));
        EXPECT_THAT(more, HasSubstr(' ' + example + '\n'));
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
