// The manual pages and docs/simulator.md against the tables that options, verbs, faults and scenarios go by.
#include "simulator/control/options.hpp"
#include "simulator/control/scenario.hpp"
#include "simulator/service/configuration_json.hpp"
#include "simulator/simulation/verb_syntax.hpp"

#include <array>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>
#include <regex>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta::simulator;
using testing::HasSubstr;

// GoogleTest's own matcher knows but a few regular expressions where the system has none.
MATCHER_P(contains_regex, pattern, "contains the regular expression " + std::string(pattern)) {
    return std::regex_search(arg, std::regex(pattern, std::regex::extended));
}

std::string file(const char* path) {
    std::ifstream stream(path);
    return {std::istreambuf_iterator<char>(stream), {}};
}

// A text with one blank for each run of white space: pages break their lines anywhere.
std::string unbroken(const std::string& text) {
    return std::regex_replace(text, std::regex("\\s+"), " ");
}

const std::string program_page = file(MAN_FOLDER "/orvanta-simulator.1");
const std::string scenario_page = file(MAN_FOLDER "/orvanta-scenario.5");
const std::string document = file(DOCS_FOLDER "/simulator.md");
const std::string fault_document = file(DOCS_FOLDER "/faults.md");

// The names of the options, faults aside, as the help lists them.
std::vector<std::string> option_names() {
    const std::array<const char*, 2> words{"orvanta-simulator", "--help"};
    const std::string help = parse_options(static_cast<int>(words.size()), words.data()).text;
    const std::regex entry("\n  (?:-h,)?--([a-z0-9-]+)");
    std::vector<std::string> names;
    for (std::sregex_iterator found(help.begin(), help.end(), entry), end; found != end; ++found) {
        names.push_back((*found)[1]);
    }
    return names;
}

std::string sentence(std::string_view effect) {
    std::string text(effect);
    text.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(text.front())));
    return text + '.';
}

TEST(the_pages, have_every_option) {
    const auto names = option_names();
    EXPECT_EQ(names.size(), 18U);
    for (const std::string& name : names) {
        EXPECT_THAT(program_page, contains_regex("\n[.]It Fl -" + name + "[ \n]"));
        EXPECT_THAT(document, contains_regex("\n[|] `--" + name + "[ `]"));
    }
}

TEST(the_pages, have_every_fault_with_its_effect_and_example) {
    const std::string page = unbroken(program_page);
    const std::string rows = unbroken(fault_document);
    for (const fault_row& row : faults) {
        const std::string name(row.name);
        const std::string example(row.example);
        EXPECT_THAT(page, contains_regex("[.]It Fl -" + name + "( (Op )?Ar [^.]*)? [A-Z]")) << name;
        EXPECT_THAT(page, HasSubstr(' ' + sentence(row.effect) + ' ')) << name;
        EXPECT_THAT(page, HasSubstr("Example: .Ql --" + name + ' ' + example + ' '));
        EXPECT_THAT(rows, HasSubstr("| `" + name + ' ' + std::string(row_of(row.argument).form) + "` |"));
        EXPECT_THAT(rows, HasSubstr("| `" + name + ' ' + example + "` |"));
    }
}

TEST(the_pages, have_every_selector_with_its_meaning) {
    const std::string page = unbroken(program_page);
    for (const selector_row& row : fault_selectors) {
        EXPECT_THAT(page, contains_regex("[.]It Cm " + std::string(row.key) + " Ns = Ns (Ar|Cm) "));
        EXPECT_THAT(page, HasSubstr(' ' + sentence(row.meaning) + ' '));
    }
}

TEST(the_pages, have_every_verb) {
    for (const verb_row& row : verbs) {
        const std::string name(row.name);
        EXPECT_THAT(program_page, contains_regex("\n[.]It Ic " + name + "[ \n]"));
        EXPECT_THAT(document, contains_regex("\n[|] `" + name + "[ `]"));
    }
    for (const std::string setting : {"gravity", "torque", "handedness"}) {
        EXPECT_THAT(program_page, HasSubstr("\n.It Ic set Ar id Cm " + setting + ' '));
        EXPECT_THAT(document, HasSubstr("\n| `set DEVICE " + setting + ' '));
    }
}

TEST(the_pages, have_every_condition) {
    for (const condition_row& row : conditions) {
        const std::string name(row.name);
        const std::string counted(row.counted);
        EXPECT_THAT(program_page, contains_regex("\n[.]It Cm " + name + "( Ar [a-z]+)?\nCounts " + counted));
        EXPECT_THAT(document, contains_regex("\n[|] `" + name + "( [A-Z]+)?` [|] " + counted + " [|] `" +
                                             std::string(row.example) + "` [|]\n"));
    }
}

TEST(the_pages, have_every_topic_of_the_help) {
    for (const std::string_view topic : help_topics) {
        EXPECT_THAT(program_page, HasSubstr("\n.Cm " + std::string(topic)));
        EXPECT_THAT(document, HasSubstr('`' + std::string(topic) + '`'));
    }
}

TEST(the_pages, have_every_member_and_event_of_scenarios) {
    const auto has_member = [](std::string_view member, const std::string& where = "[.]It Va ") {
        EXPECT_THAT(scenario_page, contains_regex('\n' + where + std::string(member) + "[ \n]"));
        EXPECT_THAT(document, contains_regex("\n[|][^|]*`" + std::string(member) + "`[^\n]*\n"));
    };
    for (const std::string_view member : scenario_members::scenario) {
        has_member(member);
    }
    for (const std::string_view member : scenario_members::device) {
        has_member(member);
    }
    for (const std::string_view member : configuration_members) {
        has_member(member, "[.]Va ");
    }
    for (const std::string_view member : scenario_members::step) {
        has_member(member);
    }
    for (const std::string_view member : scenario_members::event) {
        has_member(member, "[.]Va ");
    }
    for (const scenario_event_row& row : scenario_events) {
        const std::string name(row.name);
        EXPECT_THAT(scenario_page, HasSubstr("\n.It Cm " + name + '\n'));
        EXPECT_THAT(document, HasSubstr("\n| `" + name + "` | a "));
    }
}

TEST(the_pages, show_scenarios_that_are_right) {
    const auto read_between = [](const std::string& text, const std::string& opening,
                                 const std::string& closing) {
        const auto at = text.find(opening);
        ASSERT_NE(at, std::string::npos);
        const auto begin = at + opening.size();
        const scenario shown = read_scenario_text(text.substr(begin, text.find(closing, begin) - begin));
        EXPECT_EQ(shown.settings.seed, 7U);
        EXPECT_EQ(shown.devices.value().size(), 2U);
        EXPECT_EQ(shown.steps.size(), 3U);
    };
    read_between(scenario_page, "\n.Bd -literal\n", "\n.Ed\n");
    read_between(document.substr(document.find("\n## Scenarios\n")), "\n```json\n", "\n```\n");
}

TEST(the_pages, show_steps_for_each_client_that_are_right) {
    const std::string opening = "\n```json\n";
    const auto section = document.find("\n### Steps for each client\n");
    ASSERT_NE(section, std::string::npos);
    const auto begin = document.find(opening, section) + opening.size();
    const scenario shown =
        read_scenario_text(document.substr(begin, document.find("\n```\n", begin) - begin));
    EXPECT_TRUE(shown.for_each_client);
    EXPECT_EQ(shown.steps.size(), 3U);
}

} // namespace
} // namespace orvanta_tests
