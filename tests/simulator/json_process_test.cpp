// The simulator as a program with --json and --expect.
#include "simulator/fixtures/running_simulator.hpp"
#include "simulator/fixtures/test_client.hpp"
#include "support/control_client.hpp"
#include "support/scratch_folder.hpp"

#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sstream>

namespace orvanta_tests {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;

std::vector<json> documents_of(const std::string& text) {
    std::vector<json> all;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        all.push_back(json::parse(line));
    }
    return all;
}

std::string scenario_file(const scratch_folder& folder, const std::string& about, const std::string& verbs) {
    std::ofstream(folder.file("scenario.json"))
        << R"({"version": 1, "about": ")" << about << R"(", "steps": [{"at": 0, "do": [)" << verbs << "]}]}";
    return folder.file("scenario.json");
}

TEST(answers_in_json, are_all_that_follows_port_and_seed) {
    const scratch_folder folder;
    const std::string scenario = scenario_file(folder, "A loose plug", R"("unplug 1", "unplug 1")");
    child_process program(interactive_command({"--json", "--seed", "7", "--scenario", scenario}),
                          attachment::pipes);
    EXPECT_THAT(program.read_until("seed 7\n"), HasSubstr("listening on port "));
    program.type("wait 50\nplug orvanta3\nstatus\nnonsense\nquit\n");
    EXPECT_EQ(program.wait(), ending{1});
    const std::vector<json> told = documents_of(program.rest());
    ASSERT_THAT(told, SizeIs(8));
    EXPECT_EQ(told[0], json({{"shown", "A loose plug"}}));
    EXPECT_THAT((std::vector(told.begin() + 1, told.begin() + 4)),
                testing::UnorderedElementsAre(
                    json({{"shown", "unplugged 1"}}),
                    json({{"shown", "error: unplug 1: there is no device 1; 1001 would be right"}}),
                    json({{"ok", true}, {"text", ""}})));
    EXPECT_EQ(told[4], json({{"ok", true}, {"text", "plugged in 1"}}));
    EXPECT_EQ(told[5].at("status").at("seed"), 7);
    EXPECT_EQ(told[6].at("ok"), false);
    EXPECT_THAT(told[6].at("error").get<std::string>(), HasSubstr("nonsense"));
    EXPECT_EQ(told[7], json({{"ok", true}, {"text", ""}}));
}

TEST(answers_in_json, leave_a_trace_as_it_is) {
    running_simulator tested({"--port", "0", "--interactive", "--rate", "0", "--json", "--trace", "-"});
    test_client client("127.0.0.1", tested.port());
    client.send(datagram({{0xFF, 0x05, 0x00, 0x00, 0x07}}));
    EXPECT_FALSE(client.receive_until(6).empty());
    tested.quit();
    EXPECT_THAT(tested.wait_for_end().output, HasSubstr(": disconnect tag=7\n"));
}

TEST(answers_in_json, go_to_the_script_that_asked_alone) {
    const scratch_folder folder;
    const std::string path = folder.file("control");
    running_simulator tested({"--port", "0", "--json", "--control", path});
    EXPECT_NE(tested.port(), "");
    control_client script(path);
    EXPECT_TRUE(script.send("wait 0 devices = 9\nquit\n"));
    EXPECT_EQ(json::parse(script.line()),
              json({{"ok", false}, {"error", "waited 0 ms for devices = 9; it is 2"}}));
    EXPECT_EQ(json::parse(script.line()), json({{"ok", true}, {"text", ""}}));
    const auto end = tested.wait_for_end();
    EXPECT_EQ(end.status, 0);
    EXPECT_EQ(end.output, "");
}

TEST(a_scenario, is_a_test_by_the_steps_that_expect) {
    const scratch_folder folder;
    running_simulator wrong(
        {"--port", "0", "--scenario",
         scenario_file(folder, "", R"("expect devices = 2", "expect in connect", "quit")")});
    const auto end = wrong.wait_for_end();
    EXPECT_EQ(end.status, 1);
    EXPECT_THAT(end.output, HasSubstr("\nerror: expect in connect: expected in connect >= 1; it is 0\n"));
    EXPECT_EQ(end.output.find("expect devices"), std::string::npos);
    running_simulator right(
        {"--port", "0", "--scenario", scenario_file(folder, "", R"("expect devices = 2", "quit")")});
    EXPECT_EQ(right.wait_for_end().status, 0);
}

TEST(conditions_of_the_end, that_do_not_hold_are_told_each_and_end_the_program_with_1) {
    running_simulator tested({"--port", "0", "--rate", "0", "--interactive", "--expect", "in connect = 1",
                              "--expect", "in config_save", "--expect=happened drop >= 2", "--expect",
                              "clients = 0"});
    test_client client("127.0.0.1", tested.port());
    client.send(datagram({connect_operation(0)}));
    EXPECT_FALSE(client.receive_until(16).empty());
    tested.quit();
    const auto end = tested.wait_for_end();
    EXPECT_EQ(end.status, 1);
    EXPECT_EQ(end.output, "ok\n");
    EXPECT_EQ(end.errors, "orvanta-simulator: expected in config_save >= 1; it is 0\n"
                          "orvanta-simulator: expected happened drop >= 2; it is 0\n");
}

TEST(conditions_of_the_end, that_hold_end_the_program_with_0) {
    running_simulator tested(
        {"--port", "0", "--interactive", "--expect", "devices", "--expect", "clients = 0"});
    EXPECT_NE(tested.port(), "");
    tested.quit();
    const auto end = tested.wait_for_end();
    EXPECT_EQ(end.status, 0);
    EXPECT_EQ(end.errors, "");
}

TEST(conditions_of_the_end, that_are_no_conditions_are_refused_at_the_start) {
    running_simulator tested({"--port", "0", "--expect", "in config_svae"});
    const auto end = tested.wait_for_end();
    EXPECT_EQ(end.status, 2);
    EXPECT_THAT(end.errors, HasSubstr("--expect: 'config_svae' is no operation that goes to the service; "
                                      "config_save would be right"));
    EXPECT_EQ(end.output, "");
}

} // namespace
} // namespace orvanta_tests
