// The tool with the simulator at the other end.
#include "app/support/shown_devices.hpp"
#include "support/scratch_folder.hpp"

#include <chrono>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <initializer_list>
#include <thread>

namespace {

using namespace orvanta_tests;
using testing::HasSubstr;

TEST(tool_and_simulator, configure_a_device_at_a_pipe) {
    configure_the_device(attachment::one_pipe);
}

TEST(tool_and_simulator, find_the_device_again) {
    service_process service;
    tool_process tool;
    find_the_device(tool);
    tool.exchange("0\n", "Device Info Updated\n" + main_menu);
    tool.exchange("1\n", report_of("1"));
    leave(tool);
}

TEST(tool_and_simulator, keep_the_configuration_between_two_runs_of_the_tool) {
    service_process service;
    tool_process first;
    find_the_device(first);
    first.exchange("3\n", settings_menu);
    first.exchange("5\n", settings_menu);
    first.exchange("8\n", main_menu);
    first.exchange_until("2\n", configuration("On", "0.75", "On", "Left"));
    leave(first);
    tool_process second;
    find_the_device(second);
    second.exchange_until("2\n", configuration("On", "0.75", "On", "Left"));
    leave(second);
}

// The file is renamed into its place whole.
void wait_for_file(const std::string& path) {
    while (!std::filesystem::exists(path)) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

// Opens the settings, chooses those and goes back.
void choose_settings(tool_process& tool, std::initializer_list<const char*> choices) {
    tool.exchange("3\n", settings_menu);
    for (const char* choice : choices) {
        tool.exchange(choice, settings_menu);
    }
    tool.exchange("8\n", main_menu);
}

TEST(tool_and_simulator, show_what_was_saved_after_a_restart_and_not_what_was_only_set) {
    const orvanta_tests::scratch_folder folder;
    const std::string state = folder.file("state.json");
    {
        service_process service({"--state", state});
        tool_process tool;
        find_the_device(tool);
        choose_settings(tool, {"5\n", "7\n"});
        tool.exchange_until("2\n", configuration("On", "0.75", "On", "Left"));
        wait_for_file(state);
        leave(tool);
        EXPECT_EQ(succeeded, service.end());
    }
    {
        service_process service({"--state", state});
        tool_process tool;
        find_the_device(tool);
        tool.exchange_until("2\n", configuration("On", "0.75", "On", "Left"));
        choose_settings(tool, {"0\n", "6\n"});
        tool.exchange_until("2\n", configuration("Off", "0.75", "On", "Right"));
        leave(tool);
        EXPECT_EQ(succeeded, service.end());
    }
    service_process service({"--state", state});
    tool_process tool;
    find_the_device(tool);
    tool.exchange_until("2\n", configuration("On", "0.75", "On", "Left"));
    leave(tool);
}

TEST(tool_and_simulator, report_a_factor_out_of_range_as_an_error_of_the_service) {
    service_process service;
    tool_process tool(attachment::pipes);
    find_the_device(tool);
    tool.exchange("3\n", settings_menu);
    tool.exchange("2\n", scaling_prompt);
    tool.exchange("1.5\n", settings_menu);
    EXPECT_EQ("\nError from on_error: invalid argument\n", tool.program.read_errors_until("argument\n"));
    tool.exchange("8\n", main_menu);
    leave(tool);
    EXPECT_EQ("", tool.program.rest_of_errors());
}

TEST(tool_and_simulator, offer_two_devices_and_open_the_chosen_one) {
    service_process service({"--orvanta3", "2"});
    tool_process tool;
    tool.exchange("", banner + main_menu);
    tool.exchange("0\n",
                  "Found multiple devices\n\t0   Orvanta3 3001\n\t1   Orvanta3 3002\n\tSelect option: \t");
    tool.exchange("1\n", "Device Info Updated\n" + main_menu);
    tool.exchange("1\n", report_of("2"));
    leave(tool);
}

TEST(tool_and_simulator, give_up_on_seventeen_devices) {
    service_process service({"--orvanta3", "8", "--palmetron", "9"});
    tool_process tool;
    tool.exchange("", banner + main_menu);
    tool.exchange("0\n", "Error in find_orvanta3: an internal buffer is either full or empty\n"
                         "No devices found\n" +
                             main_menu);
    leave(tool);
}

TEST(tool_and_simulator, find_nothing_where_there_are_grips_alone) {
    service_process service({"--orvanta3", "0", "--palmetron", "2"});
    tool_process tool;
    tool.exchange("", banner + main_menu);
    tool.exchange("0\n", "No devices found\nNo devices found\n" + main_menu);
    leave(tool);
}

TEST(tool_and_simulator, find_a_device_that_is_announced_after_the_acceptance) {
    service_process service({"--announce", "after"});
    tool_process tool;
    tool.exchange("", banner + main_menu);
    tool.exchange_until("0\n", "Device Info Updated\n" + main_menu);
    leave(tool);
}

TEST(tool_and_simulator, serve_two_tools_at_once) {
    service_process service;
    tool_process first;
    find_the_device(first);
    tool_process second;
    find_the_device(second);
    second.exchange("3\n", settings_menu);
    second.exchange("5\n", settings_menu);
    second.exchange("8\n", main_menu);
    first.exchange_until("2\n", configuration("On", "0.75", "On", "Left"));
    leave(first);
    second.exchange_until("2\n", configuration("On", "0.75", "On", "Left"));
    leave(second);
}

TEST(tool_and_simulator, refuse_a_second_tool_where_there_may_be_one) {
    service_process service({"--single-client"});
    tool_process first;
    find_the_device(first);
    child_process second({ORVANTA_CLI_PATH}, attachment::pipes);
    EXPECT_EQ(aborted, second.wait());
    EXPECT_THAT(second.rest_of_errors(), HasSubstr("client.connect: another client is already connected\n"));
    leave(first);
    tool_process third;
    find_the_device(third);
    leave(third);
}

TEST(tool_and_simulator, part_when_the_service_says_goodbye) {
    service_process service;
    tool_process tool;
    find_the_device(tool);
    const std::size_t threads = tool.program.threads();
    EXPECT_EQ(succeeded, service.end());
    tool.program.wait_for_threads(threads - 1);
    tool.exchange("1\n", "\n\tDevice Type:\tNil\n\tID:\t\t0000\n"
                         "\tUUID:\t\t00000000-00000000-00000000-00000000\n" +
                             main_menu);
    tool.exchange("2\n", no_device_connected + main_menu);
    tool.exchange("3\n", settings_menu);
    tool.program.type("7\n");
    EXPECT_EQ(aborted, tool.program.wait());
    EXPECT_THAT(tool.program.rest(), HasSubstr("invalid connection state\n"));
}

TEST(tool_and_simulator, end_in_order_after_a_goodbye_of_the_service) {
    service_process service;
    tool_process tool;
    find_the_device(tool);
    const std::size_t threads = tool.program.threads();
    EXPECT_EQ(succeeded, service.end());
    tool.program.wait_for_threads(threads - 1);
    leave(tool);
}

TEST(tool_and_simulator, meet_when_the_service_starts_while_the_tool_still_tries) {
    tool_process tool;
    tool.program.read_until("Attempted to establish connection to port [54321] ret [operation timed out]\n");
    service_process service;
    tool.exchange("", banner + main_menu);
    tool.exchange("0\n", "Device Info Updated\n" + main_menu);
    leave(tool);
}

} // namespace
