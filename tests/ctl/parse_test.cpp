// The command line: what is read, and what is said of mistakes.
#include "ctl/arguments/command_table.hpp"
#include "ctl/arguments/parse.hpp"
#include "ctl/report/exit_status.hpp"

#include <chrono>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using namespace vantu::orvanta::ctl;
using namespace std::chrono_literals;

request parsed(std::vector<const char*> words) {
    words.insert(words.begin(), "orvantactl");
    return parse(static_cast<int>(words.size()), words.data());
}

std::string refusal(const std::vector<const char*>& words) {
    try {
        return "accepted as " + std::string(parsed(words).command->name);
    } catch (const failure_with_status& why) {
        EXPECT_EQ(why.status(), exit_status::wrong_usage);
        return why.what();
    }
}

std::string help(const std::vector<const char*>& words) {
    try {
        return "no help but " + std::string(parsed(words).command->name);
    } catch (const help_asked& asked) {
        return asked.text;
    }
}

TEST(a_command_line, has_defaults) {
    const request asked = parsed({"list"});
    EXPECT_EQ(asked.command->name, "list");
    EXPECT_TRUE(asked.words.empty());
    EXPECT_EQ(asked.device, "");
    EXPECT_FALSE(asked.duration.has_value());
    EXPECT_EQ(asked.timeout, 2s);
    EXPECT_FALSE(asked.json);
    EXPECT_FALSE(asked.verbose);
}

TEST(a_command_line, has_options_before_and_after_the_command) {
    const request asked =
        parsed({"--json", "--timeout", "3s", "wait", "removal", "--for=250ms", "-v", "--device", "3001"});
    EXPECT_EQ(asked.command->name, "wait");
    EXPECT_EQ(asked.words, std::vector<std::string>{"removal"});
    EXPECT_EQ(asked.device, "3001");
    EXPECT_EQ(asked.duration, 250ms);
    EXPECT_EQ(asked.timeout, 3s);
    EXPECT_TRUE(asked.json);
    EXPECT_TRUE(asked.verbose);
}

TEST(a_command_line, has_words_alone_after_two_dashes) {
    EXPECT_EQ(parsed({"wait", "--", "removal"}).words, std::vector<std::string>{"removal"});
    EXPECT_EQ(refusal({"wait", "--", "--json"}),
              "wait: '--json' is no word that it knows; see orvantactl wait --help");
}

TEST(a_command_line, asks_for_the_versions_in_two_ways) {
    EXPECT_EQ(parsed({"version"}).command->name, "version");
    EXPECT_EQ(parsed({"--version"}).command->name, "version");
    EXPECT_EQ(parsed({"list", "--version"}).command->name, "version");
}

TEST(a_command_line, passes_all_words_of_the_hidden_command_on) {
    const request asked = parsed({"complete", "--", "wait", "--js", ""});
    EXPECT_EQ(asked.command, &completion_command());
    EXPECT_EQ(asked.words, (std::vector<std::string>{"wait", "--js", ""}));
    EXPECT_TRUE(parsed({"complete"}).words.empty());
    EXPECT_TRUE(parsed({"complete", "--"}).words.empty());
}

TEST(a_mistake, in_the_command_gets_a_hint_when_one_is_near) {
    EXPECT_EQ(refusal({}), "a command is missing; see orvantactl --help");
    EXPECT_EQ(refusal({"--json"}), "a command is missing; see orvantactl --help");
    EXPECT_EQ(refusal({"lst"}), "there is no command 'lst'; list would be right");
    EXPECT_EQ(refusal({"versoin", "--json"}), "there is no command 'versoin'; version would be right");
    EXPECT_EQ(refusal({"frobnicate"}), "there is no command 'frobnicate'; see orvantactl --help");
    EXPECT_EQ(refusal({""}), "there is no command ''; see orvantactl --help");
}

TEST(a_mistake, in_an_option_names_the_command_and_a_near_option) {
    EXPECT_EQ(refusal({"list", "--jsn"}), "list: there is no option --jsn; --json would be right");
    EXPECT_EQ(refusal({"info", "--devcie=1"}), "info: there is no option --devcie; --device would be right");
    EXPECT_EQ(refusal({"--jsn"}), "there is no option --jsn; --json would be right");
    EXPECT_EQ(refusal({"-x", "list"}), "list: there is no option -x; see orvantactl list --help");
}

TEST(a_mistake, is_an_option_of_another_command) {
    EXPECT_EQ(refusal({"list", "--for", "1s"}), "list: there is no option --for; see orvantactl list --help");
}

TEST(a_mistake, in_a_words_place_names_the_command) {
    EXPECT_EQ(refusal({"list", "list"}), "list: 'list' is a word too many; see orvantactl list --help");
    EXPECT_EQ(refusal({"list", "/x"}), "list: '/x' is a word too many; see orvantactl list --help");
    EXPECT_EQ(refusal({"wait", "device", "removal"}),
              "wait: 'removal' is a word too many; see orvantactl wait --help");
    EXPECT_EQ(refusal({"wait", "devcie"}), "wait: 'devcie' is no word that it knows; device would be right");
    EXPECT_EQ(refusal({"wait", "tomorrow"}),
              "wait: 'tomorrow' is no word that it knows; see orvantactl wait --help");
}

TEST(a_mistake, in_an_options_value_names_command_and_option) {
    EXPECT_EQ(refusal({"list", "--timeout", "soon"}),
              "list: --timeout: 'soon' is no time from 1ms to 1440m, such as 500ms, 2s or 10m");
    EXPECT_EQ(refusal({"list", "--timeout"}), "list: --timeout needs one value");
    EXPECT_EQ(refusal({"list", "--timeout", "1s", "--timeout", "2s"}), "list: --timeout needs one value");
    EXPECT_EQ(refusal({"info", "--device"}), "info: --device needs one value");
    EXPECT_EQ(refusal({"info", "--device="}), "info: --device needs one value");
}

TEST(json, is_asked_for_wherever_it_stands) {
    const std::vector<const char*> with{"orvantactl", "lst", "--json"};
    EXPECT_TRUE(asks_for_json(3, with.data()));
    EXPECT_FALSE(asks_for_json(2, with.data()));
}

TEST(help, is_the_programs_or_that_of_the_command) {
    const std::string of_program = help({"--help"});
    EXPECT_THAT(of_program, testing::HasSubstr("Usage: orvantactl COMMAND [OPTIONS]\n"));
    EXPECT_THAT(of_program, testing::HasSubstr("\nCommands:\n  list                     list the devices\n"));
    EXPECT_THAT(of_program, testing::Not(testing::HasSubstr("complete")));
    EXPECT_EQ(help({"wait", "-h"}), help({"--help", "wait"}));
}

TEST(help, of_a_command_has_its_own_options_and_those_of_each) {
    EXPECT_EQ(help({"wait", "--help", "--bogus"}),
              R"(orvantactl wait: wait for a device, its removal or the service
Usage: orvantactl wait [OPTIONS] [EVENT]

Words:
  device                   an Orvanta3 is there, or the device that --device names; the default
  removal                  a device that is there is unplugged
  service                  a service answers

Options:
  --device D               the device: its id, its short id, or a part of its uuid
  --for TIME               for how long at most, as in 500ms or 5m; without it, no end
  --capture FILE           write the datagrams of both sides into a file in the pcap format

Options of each command:
  -h, --help               print this help, or that of a command
  --timeout TIME           the longest time of the whole command, as in 500ms or 2s
  --json                   print results as JSON, one document a line, and errors too
  -v                       print the library's log on standard error
)");
}

} // namespace
