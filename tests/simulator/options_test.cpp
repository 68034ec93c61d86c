// The command line, without a program around it.
#include "simulator/options.hpp"

#include <gmock/gmock.h>
#include <vector>

namespace simulator_tests {
namespace {

using namespace vantu::orvanta::simulator;
using testing::HasSubstr;
using testing::Not;

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
}

TEST(options, are_taken) {
    const parse_outcome outcome =
        parse({"--port", "0", "--orvanta3", "256", "--palmetron=0", "--announce", "after", "--single-client",
               "--rate", "0.5", "--state", "a file", "--verbose"});
    EXPECT_EQ(outcome.verdict, parse_verdict::run);
    EXPECT_EQ(outcome.chosen.port, "0");
    EXPECT_EQ(outcome.chosen.orvanta3_count, 256U);
    EXPECT_EQ(outcome.chosen.palmetron_count, 0U);
    EXPECT_EQ(outcome.chosen.announce, announce_order::after);
    EXPECT_TRUE(outcome.chosen.single_client);
    EXPECT_EQ(outcome.chosen.rate_hz, 0.5);
    EXPECT_EQ(outcome.chosen.state_path, "a file");
    EXPECT_TRUE(outcome.chosen.verbose);
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

TEST(options, show_their_help_and_the_version) {
    const parse_outcome help = parse({"--help"});
    EXPECT_EQ(help.verdict, parse_verdict::show);
    for (const char* name : {"--port", "--orvanta3", "--palmetron", "--announce", "--single-client", "--rate",
                             "--state", "--verbose", "--help", "--version"}) {
        EXPECT_THAT(help.text, HasSubstr(name));
    }
    const parse_outcome version = parse({"--version"});
    EXPECT_EQ(version.verdict, parse_verdict::show);
    EXPECT_EQ(version.text, "orvanta-simulator 2.0.0\n");
}

} // namespace
} // namespace simulator_tests
