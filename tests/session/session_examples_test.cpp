// The programs of examples/session, run as a user runs them: what they print, where, and how they end, with a
// service that is well and with one that is not.
#include "app/support/child_process.hpp"
#include "support/service_process.hpp"

#include <algorithm>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace orvanta_tests;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

constexpr ending failed{1, 0};
const std::string orvanta3_line = "orvanta3       1  6e2b8410-5f3c-4d71-9a03-c53800000001\n";
const std::string palmetron_line = "palmetron   1001  b1470d29-e862-4a15-8c90-7ed400000001\n";

run_of_a_program run(std::vector<std::string> command) {
    child_process program(command, attachment::pipes);
    return ended(program);
}

// "1,0.1,-2,3e-05,0,0,0", as each line of the table is to be.
bool is_csv_line(const std::string& line) {
    const bool has_right_letters = line.find_first_not_of("0123456789+-.e,") == std::string::npos;
    return has_right_letters && !line.empty() && std::count(line.begin(), line.end(), ',') == 6 &&
           line.find(",,") == std::string::npos && line.back() != ',' && line.front() != ',';
}

// The number of lines; each of them is one of the table, and the last one is whole.
std::size_t csv_lines(const std::string& output) {
    EXPECT_TRUE(output.empty() || output.back() == '\n');
    std::istringstream lines(output);
    std::size_t count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
        EXPECT_TRUE(is_csv_line(line)) << line;
    }
    return count;
}

std::string read_states(child_process& program) {
    return program.read_until([](const std::string& printed) { return printed.size() > 4096; });
}

TEST(list_devices, prints_a_line_for_each_device_and_nothing_else) {
    const service_process service;
    const auto seen = run({LIST_DEVICES_PATH});
    EXPECT_EQ(seen.end, succeeded);
    EXPECT_EQ(seen.output, orvanta3_line + palmetron_line);
    EXPECT_EQ(seen.errors, "");
}

TEST(list_devices, says_on_standard_error_that_there_is_no_service) {
    const auto seen = run({LIST_DEVICES_PATH});
    EXPECT_EQ(seen.end, failed);
    EXPECT_EQ(seen.output, "");
    EXPECT_THAT(seen.errors,
                EndsWith("no service answers on port 54320, or the local ports 54321 to 54336 are "
                         "all taken; start the device service, or orvanta-simulator where there "
                         "is no device\n"));
    EXPECT_THAT(seen.errors, HasSubstr("connect: "));
}

TEST(list_devices, says_that_an_acceptance_makes_no_sense) {
    const service_process service({"--truncate", "3@op=4,dir=out"});
    const auto seen = run({LIST_DEVICES_PATH});
    EXPECT_EQ(seen.end, failed);
    EXPECT_EQ(seen.output, "");
    EXPECT_THAT(seen.errors,
                EndsWith(": what answers there is no device service, or one of another version\n"));
}

TEST(list_devices, outlives_an_acceptance_that_is_lost) {
    const service_process service({"--drop", "@nth=1,op=4,dir=out"});
    const auto seen = run({LIST_DEVICES_PATH});
    EXPECT_EQ(seen.end, succeeded);
    EXPECT_EQ(seen.output, orvanta3_line + palmetron_line);
}

TEST(list_devices, outlives_a_service_that_goes_silent_after_the_acceptance) {
    const service_process service({"--drop", "@op=5,dir=in"});
    const auto seen = run({LIST_DEVICES_PATH});
    EXPECT_EQ(seen.end, succeeded);
    EXPECT_EQ(seen.output, orvanta3_line + palmetron_line);
    EXPECT_EQ(seen.errors, "");
}

TEST(list_devices, leaves_out_a_device_while_it_is_unplugged) {
    service_process service;
    service.tell("unplug 1");
    EXPECT_EQ(run({LIST_DEVICES_PATH}).output, palmetron_line);
    service.tell("plug orvanta3");
    const auto seen = run({LIST_DEVICES_PATH});
    EXPECT_EQ(seen.end, succeeded);
    EXPECT_THAT(seen.output, HasSubstr("orvanta3 "));
    EXPECT_THAT(seen.output, HasSubstr(palmetron_line));
}

TEST(set_scaling_factor, prints_what_is_in_force_now) {
    const service_process service;
    const auto seen = run({SET_SCALING_FACTOR_PATH, "0.5"});
    EXPECT_EQ(seen.end, succeeded);
    EXPECT_EQ(seen.output, "gravity compensation on, factor 0.5\n");
    EXPECT_EQ(seen.errors, "");
    EXPECT_EQ(run({SET_SCALING_FACTOR_PATH}).output, "gravity compensation on, factor 1\n");
}

void expect_failure(const std::vector<std::string>& command, const std::string& message) {
    const auto seen = run(command);
    EXPECT_EQ(seen.end, failed);
    EXPECT_EQ(seen.output, "");
    EXPECT_THAT(seen.errors, EndsWith(message));
}

TEST(set_scaling_factor, says_that_the_service_refuses) {
    const service_process service;
    expect_failure({SET_SCALING_FACTOR_PATH, "7"}, "set_scaling_factor of device 1: invalid argument\n");
}

TEST(set_scaling_factor, says_that_an_answer_was_lost) {
    const service_process service({"--drop", "@op=66,dir=out"});
    expect_failure({SET_SCALING_FACTOR_PATH, "0.5"}, "set_scaling_factor of device 1: operation timed out\n");
}

TEST(set_scaling_factor, says_that_an_answer_made_no_sense) {
    const service_process service({"--truncate", "17@op=66,dir=out"});
    expect_failure({SET_SCALING_FACTOR_PATH, "0.5"}, "set_scaling_factor of device 1: operation timed out\n");
}

TEST(set_scaling_factor, says_that_there_is_no_service) {
    expect_failure({SET_SCALING_FACTOR_PATH, "0.5"}, "orvanta-simulator where there is no device\n");
}

TEST(set_scaling_factor, fails_without_a_device_and_works_with_it) {
    service_process service;
    service.tell("unplug 1");
    expect_failure({SET_SCALING_FACTOR_PATH, "0.5"}, "wait_for_device: operation timed out\n");
    service.tell("plug orvanta3");
    EXPECT_EQ(run({SET_SCALING_FACTOR_PATH, "0.25"}).output, "gravity compensation on, factor 0.25\n");
}

TEST(set_scaling_factor, fails_when_the_service_is_killed_while_it_waits) {
    service_process service({"--verbose", "--rate", "0", "--drop", "@op=66,dir=out"});
    child_process program({SET_SCALING_FACTOR_PATH, "0.5"}, attachment::pipes);
    service.await("open");
    service.kill();
    const auto seen = ended(program);
    EXPECT_EQ(seen.end, failed);
    EXPECT_EQ(seen.output, "");
    EXPECT_THAT(seen.errors, HasSubstr("of device 1: "));
}

TEST(cursor_to_csv, prints_lines_of_the_table_alone) {
    const service_process service({"--rate", "1000"});
    const auto seen = run({CURSOR_TO_CSV_PATH, "1"});
    EXPECT_EQ(seen.end, succeeded);
    EXPECT_GT(csv_lines(seen.output), 0U);
    EXPECT_THAT(seen.output, StartsWith("1,"));
    EXPECT_EQ(seen.errors, "");
}

TEST(cursor_to_csv, leaves_out_datagrams_that_make_no_sense) {
    const service_process service(
        {"--rate", "1000", "--truncate", "17@op=33,p=0.2", "--patch", "header.magic=other@op=33,p=0.1"});
    const auto seen = run({CURSOR_TO_CSV_PATH, "1"});
    EXPECT_EQ(seen.end, succeeded);
    EXPECT_GT(csv_lines(seen.output), 0U);
}

TEST(cursor_to_csv, outlives_an_answer_that_is_lost) {
    const service_process service({"--rate", "1000", "--drop", "@op=19,dir=out"});
    const auto seen = run({CURSOR_TO_CSV_PATH, "1"});
    EXPECT_EQ(seen.end, succeeded);
    EXPECT_GT(csv_lines(seen.output), 0U);
}

TEST(cursor_to_csv, fails_when_the_service_is_killed) {
    service_process service({"--rate", "50"});
    child_process program({CURSOR_TO_CSV_PATH, "600"}, attachment::pipes);
    const std::string states = read_states(program);
    service.kill();
    const auto seen = ended(program);
    EXPECT_EQ(seen.end, failed);
    EXPECT_GT(csv_lines(states + seen.output), 0U);
    // The system tells of the closed port, or, as Wine does, does not.
    EXPECT_THAT(seen.errors,
                testing::AnyOf(EndsWith("connection lost: the service's port is closed\n"),
                               EndsWith("connection lost: the service does not answer any more\n")));
}

TEST(cursor_to_csv, goes_on_with_a_device_that_was_unplugged_and_plugged_in) {
    service_process service({"--verbose", "--rate", "1000"});
    child_process program({CURSOR_TO_CSV_PATH, "600"}, attachment::pipes);
    service.await("open");
    std::string states = read_states(program);
    service.tell("unplug 1");
    service.tell("plug orvanta3");
    service.await("open");
    states += read_states(program); // some of it from before
    states += read_states(program);
    EXPECT_EQ(service.end(), succeeded);
    const auto seen = ended(program);
    EXPECT_EQ(seen.end, failed);
    EXPECT_GT(csv_lines(states + seen.output), 0U);
    EXPECT_THAT(seen.errors, EndsWith("connection lost: the service said goodbye\n"));
}

TEST(cursor_to_csv, says_that_there_is_no_service) {
    expect_failure({CURSOR_TO_CSV_PATH, "1"}, "orvanta-simulator where there is no device\n");
}

TEST(examples, are_as_short_as_is_said) {
    const std::vector<std::pair<std::string, std::ptrdiff_t>> bounds{
        {"list_devices.cpp", 10}, {"set_scaling_factor.cpp", 15}, {"cursor_to_csv.cpp", 20}};
    for (const auto& [name, most] : bounds) {
        std::ifstream file(std::string(EXAMPLES_FOLDER) + "/" + name);
        const std::string text{std::istreambuf_iterator<char>(file), {}};
        EXPECT_FALSE(text.empty()) << name;
        EXPECT_LE(std::count(text.begin(), text.end(), '\n'), most) << name;
    }
}

} // namespace
