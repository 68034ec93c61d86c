// The simulator as a program with scenarios: those that are shipped, by name, and steps that fail.
#include "app/support/child_process.hpp"
#include "simulator/fixtures/running_simulator.hpp"
#include "simulator/fixtures/test_client.hpp"
#include "support/scratch_folder.hpp"

#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>

namespace orvanta_tests {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

const std::string about_the_loose_plug =
    "A loose plug: the device is gone two seconds after it was opened, and back two seconds later.";

running_simulator::ending end_of(const std::vector<std::string>& arguments) {
    running_simulator tested(arguments);
    return tested.wait_for_end();
}

TEST(shipped_scenarios, are_listed_with_what_they_show) {
    const auto end = end_of({"--scenario", "list"});
    EXPECT_EQ(end.status, 0);
    EXPECT_EQ(end.errors, "");
    EXPECT_THAT(end.output, HasSubstr("unplug_while_streaming    " + about_the_loose_plug));
    std::istringstream lines(end.output);
    std::size_t listed = 0;
    for (std::string line; std::getline(lines, line); ++listed) {
        EXPECT_TRUE(std::filesystem::exists(std::string(SCENARIO_FOLDER "/") +
                                            line.substr(0, line.find(' ')) + ".json"))
            << line;
    }
    EXPECT_EQ(listed, static_cast<std::size_t>(
                          std::distance(std::filesystem::directory_iterator(SCENARIO_FOLDER), {})));
}

TEST(shipped_scenarios, are_found_by_name_and_say_what_they_show) {
    for (const char* name : {"unplug_while_streaming", "unplug_while_streaming.json"}) {
        running_simulator tested({"--port", "0", "--interactive", "--scenario", name});
        EXPECT_NE(tested.port(), "") << name;
        tested.quit();
        const auto end = tested.wait_for_end();
        EXPECT_EQ(end.status, 0);
        EXPECT_EQ(end.output, about_the_loose_plug + "\nok\n");
    }
}

TEST(shipped_scenarios, are_looked_for_by_names_alone) {
    const auto end = end_of({"--port", "0", "--scenario", "no_such_scenario"});
    EXPECT_EQ(end.status, 1);
    EXPECT_EQ(end.errors,
              "orvanta-simulator: no_such_scenario: no file of that name; the path of a scenario would be "
              "right\n");
    EXPECT_THAT(end_of({"--port", "0", "--scenario", "./unplug_while_streaming"}).errors,
                StartsWith("orvanta-simulator: ./unplug_while_streaming: no file of that name; "));
}

TEST(a_scenario, sets_what_the_options_leave_out) {
    const scratch_folder folder;
    const std::string path = folder.file("desk.json");
    const std::string trace = std::filesystem::path(folder.file("trace.txt")).generic_string();
    std::ofstream(path) << R"({"version": 1, "port": 0, "palmetron": 0, "verbose": true, "trace": ")" << trace
                        << R"(", "steps": [{"after": "connect", "do": "quit"}]})";
    running_simulator tested({"--scenario", path});
    test_client client("127.0.0.1", tested.port());
    client.send(datagram({connect_operation(0)}));
    const auto end = tested.wait_for_end();
    EXPECT_EQ(end.status, 0);
    EXPECT_THAT(end.errors, HasSubstr("connected, 'tester'"));
    std::ifstream stream(trace);
    const std::string lines{std::istreambuf_iterator<char>(stream), {}};
    EXPECT_THAT(lines, HasSubstr(" -: connect "));
    EXPECT_THAT(lines, HasSubstr("device_added device_id=1"));
    EXPECT_THAT(lines, testing::Not(HasSubstr("device_id=1001")));
}

TEST(a_scenario, names_files_from_the_current_folder) {
    const scratch_folder folder;
    const std::string path = folder.file("desk.json");
    const std::string state = "orvanta_state_" + std::filesystem::path(folder.path()).filename().string();
    std::ofstream(path) << R"({"version": 1, "port": 0, "state": ")" << state << R"("})";
    std::ofstream(state) << "nonsense";
    const auto end = end_of({"--scenario", path});
    std::filesystem::remove(state);
    EXPECT_EQ(end.status, 1);
    EXPECT_THAT(end.errors, StartsWith("orvanta-simulator: " + state + ":1: "));
}

// Each client meets the fault once, whenever it comes, and no other's.
TEST(a_scenario_for_each_client, begins_anew_with_each_client) {
    const scratch_folder folder;
    const std::string path = folder.file("desk.json");
    std::ofstream(path) << R"({"version": 1, "port": 0, "rate": 0, "for_each_client": true, "steps": [
        {"after": "open", "do": ["send ack tag=7 client=this", "status"]}]})";
    running_simulator tested({"--scenario", path, "--interactive"});
    test_client first("127.0.0.1", tested.port());
    test_client second("127.0.0.1", tested.port());
    const bytes open = datagram({{0xFF, 0x12, 0x06, 0x00, 0x01, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00}});
    const bytes sent = datagram({{0xFF, 0x02, 0x00, 0x00, 0x07}});
    for (test_client* const one : {&first, &second, &first}) {
        one->send(datagram({connect_operation(0)}));
        EXPECT_FALSE(one->receive_until(16).empty());
        one->send(open);
        EXPECT_EQ(one->receive_until(2), sent);
    }
    for (test_client* const one : {&first, &second}) {
        for (const bytes& later : one->take_waiting()) {
            EXPECT_NE(later, sent);
        }
    }
    tested.quit();
    const auto end = tested.wait_for_end();
    EXPECT_EQ(end.status, 0);
    EXPECT_THAT(end.output, HasSubstr("clients 2\n  1 client "));
}

TEST(a_step_that_fails, is_an_error_and_ends_the_program_with_1) {
    const scratch_folder folder;
    const std::string path = folder.file("fails.json");
    std::ofstream(path) << R"({"version": 1, "steps": [{"at": 0, "do": ["unplug 9", "quit"]}]})";
    const auto end = end_of({"--port", "0", "--scenario", path});
    EXPECT_THAT(end.output, HasSubstr("error: unplug 9: there is no device 9; 1 or 1001 would be right\n"));
    EXPECT_EQ(end.status, 1);
}

TEST(a_line_of_a_script_that_fails, ends_the_program_with_1) {
    child_process program(interactive_command({}), attachment::pipes);
    program.type("nonsense\nquit\n");
    EXPECT_EQ(program.wait(), ending{1});
    EXPECT_THAT(program.rest(), HasSubstr("error: "));
}

} // namespace
} // namespace orvanta_tests
