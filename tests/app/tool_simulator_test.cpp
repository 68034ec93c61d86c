// The tool with the simulator at the other end.
#include "app/support/tool_process.hpp"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <initializer_list>
#include <memory>
#include <thread>
#include <utility>

namespace {

using namespace orvanta_test;
using testing::HasSubstr;

class simulator_process {
  public:
    explicit simulator_process(std::vector<std::string> options = {})
        : program_(command(std::move(options)), attachment::pipes) {
        program_.read_until("listening on port 54320\n");
    }

    // Waits for the end that the signal brings.
    ending end_with(int signal) {
        program_.send_signal(signal);
        return program_.wait();
    }

  private:
    static std::vector<std::string> command(std::vector<std::string> options) {
        options.insert(options.begin(), ORVANTA_SIMULATOR_PATH);
        return options;
    }

    child_process program_;
};

std::string report_of(const std::string& number) {
    return "\n\tDevice Type:\tOrvanta3\n\tID:\t\t300" + number +
           "\n\tUUID:\t\t6E2B8410-5F3C4D71-9A03C538-0000000" + number + "\n" + main_menu;
}

// The orientation moves all the time: its numbers are not compared.
std::string configuration(const std::string& gravity, const std::string& factor, const std::string& torque,
                          const std::string& hand) {
    return "\n\tOrientation:\n\t   r =  0.0000\n\t   x =  0.0000\n\t   y =  0.0000\n\t   z =  0.0000\n"
           "\n\tGravity Compensation: \t" +
           gravity + "\n\t   Scaling Factor:\t" + factor + "\n\n\tTorque Scaling:\t\t" + torque +
           "\n\n\tHandedness:\t\t" + hand + "\n" + main_menu;
}

void leave(tool_process& tool) {
    tool.program.type("4\n");
    const ending seen = tool.program.wait();
    EXPECT_EQ(succeeded, seen);
}

void find_the_device(tool_process& tool) {
    tool.exchange("", banner + main_menu);
    tool.exchange("0\n", "Device Info Updated\n" + main_menu);
}

void configure_the_device(attachment kind) {
    simulator_process service;
    tool_process tool(kind);
    find_the_device(tool);
    tool.exchange("1\n", report_of("1"));
    tool.exchange_until("2\n", configuration("On", "0.75", "On", "Right"));
    tool.exchange("3\n", settings_menu);
    tool.exchange("0\n", settings_menu);
    tool.exchange("8\n", main_menu);
    tool.exchange_until("2\n", configuration("Off", "0.75", "On", "Right"));
    tool.exchange("3\n", settings_menu);
    tool.exchange("2\n", scaling_prompt);
    tool.exchange("0.5\n", settings_menu);
    tool.exchange("8\n", main_menu);
    tool.exchange_until("2\n", configuration("Off", "0.50", "On", "Right"));
    tool.exchange("3\n", settings_menu);
    tool.exchange("1\n", settings_menu);
    tool.exchange("3\n", settings_menu);
    tool.exchange("5\n", settings_menu);
    tool.exchange("7\n", settings_menu);
    tool.exchange("8\n", main_menu);
    tool.exchange_until("2\n", configuration("On", "0.50", "Off", "Left"));
    leave(tool);
    EXPECT_EQ(succeeded, service.end_with(SIGTERM));
}

TEST(tool_and_simulator, configure_a_device_at_a_pipe) {
    configure_the_device(attachment::one_pipe);
}

TEST(tool_and_simulator, configure_a_device_at_a_terminal) {
    configure_the_device(attachment::pseudo_terminal);
}

TEST(tool_and_simulator, find_the_device_again) {
    simulator_process service;
    tool_process tool;
    find_the_device(tool);
    tool.exchange("0\n", "Device Info Updated\n" + main_menu);
    tool.exchange("1\n", report_of("1"));
    leave(tool);
}

TEST(tool_and_simulator, keep_the_configuration_between_two_runs_of_the_tool) {
    simulator_process service;
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

// A state file in a folder of its own.
class state_file {
  public:
    state_file() {
        std::string pattern = (std::filesystem::temp_directory_path() / "tool_state_XXXXXX").string();
        EXPECT_NE(mkdtemp(pattern.data()), nullptr);
        folder_ = pattern;
    }
    ~state_file() { std::filesystem::remove_all(folder_); }
    state_file(const state_file&) = delete;
    state_file& operator=(const state_file&) = delete;

    [[nodiscard]] std::string path() const { return (folder_ / "state.json").string(); }

    // Waits until the file has been written whole; the file is renamed into its place.
    void wait_for_it() const {
        while (!std::filesystem::exists(path())) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }

  private:
    std::filesystem::path folder_;
};

// Opens the settings, chooses those and goes back.
void choose_settings(tool_process& tool, std::initializer_list<const char*> choices) {
    tool.exchange("3\n", settings_menu);
    for (const char* choice : choices) {
        tool.exchange(choice, settings_menu);
    }
    tool.exchange("8\n", main_menu);
}

TEST(tool_and_simulator, show_what_was_saved_behind_a_restart_and_not_what_was_only_set) {
    const state_file state;
    {
        simulator_process service({"--state", state.path()});
        tool_process tool;
        find_the_device(tool);
        choose_settings(tool, {"5\n", "7\n"});
        tool.exchange_until("2\n", configuration("On", "0.75", "On", "Left"));
        state.wait_for_it();
        leave(tool);
        EXPECT_EQ(succeeded, service.end_with(SIGTERM));
    }
    {
        simulator_process service({"--state", state.path()});
        tool_process tool;
        find_the_device(tool);
        tool.exchange_until("2\n", configuration("On", "0.75", "On", "Left"));
        choose_settings(tool, {"0\n", "6\n"});
        tool.exchange_until("2\n", configuration("Off", "0.75", "On", "Right"));
        leave(tool);
        EXPECT_EQ(succeeded, service.end_with(SIGTERM));
    }
    simulator_process service({"--state", state.path()});
    tool_process tool;
    find_the_device(tool);
    tool.exchange_until("2\n", configuration("On", "0.75", "On", "Left"));
    leave(tool);
}

TEST(tool_and_simulator, report_a_factor_out_of_range_as_an_error_of_the_service) {
    simulator_process service;
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
    simulator_process service({"--orvanta3", "2"});
    tool_process tool;
    tool.exchange("", banner + main_menu);
    tool.program.type("0\n");
    const std::string offered = tool.program.read_until("\tSelect option: \t");
    const bool in_order = offered.find("\t0   Orvanta3 3001\n") != std::string::npos;
    EXPECT_EQ(in_order
                  ? "Found multiple devices\n\t0   Orvanta3 3001\n\t1   Orvanta3 3002\n\tSelect option: \t"
                  : "Found multiple devices\n\t0   Orvanta3 3002\n\t1   Orvanta3 3001\n\tSelect option: \t",
              offered);
    tool.exchange("1\n", "Device Info Updated\n" + main_menu);
    tool.exchange("1\n", report_of(in_order ? "2" : "1"));
    leave(tool);
}

TEST(tool_and_simulator, give_up_on_seventeen_devices) {
    simulator_process service({"--orvanta3", "8", "--palmetron", "9"});
    tool_process tool;
    tool.exchange("", banner + main_menu);
    tool.exchange("0\n", "Error in find_orvanta3: an internal buffer is either full or empty\n"
                         "No devices found\n" +
                             main_menu);
    leave(tool);
}

TEST(tool_and_simulator, find_nothing_where_there_are_grips_alone) {
    simulator_process service({"--orvanta3", "0", "--palmetron", "2"});
    tool_process tool;
    tool.exchange("", banner + main_menu);
    tool.exchange("0\n", "No devices found\nNo devices found\n" + main_menu);
    leave(tool);
}

TEST(tool_and_simulator, find_a_device_that_is_announced_after_the_acceptance) {
    simulator_process service({"--announce", "after"});
    tool_process tool;
    tool.exchange("", banner + main_menu);
    tool.exchange_until("0\n", "Device Info Updated\n" + main_menu);
    leave(tool);
}

TEST(tool_and_simulator, serve_two_tools_at_once) {
    simulator_process service;
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
    simulator_process service({"--single-client"});
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
    simulator_process service;
    tool_process tool;
    find_the_device(tool);
    const std::size_t threads = tool.program.threads();
    EXPECT_EQ(succeeded, service.end_with(SIGTERM));
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
    simulator_process service;
    tool_process tool;
    find_the_device(tool);
    const std::size_t threads = tool.program.threads();
    EXPECT_EQ(succeeded, service.end_with(SIGINT));
    tool.program.wait_for_threads(threads - 1);
    leave(tool);
}

TEST(tool_and_simulator, survive_a_service_that_is_killed_and_started_again) {
    auto service = std::make_unique<simulator_process>();
    tool_process tool;
    find_the_device(tool);
    const std::size_t threads = tool.program.threads();
    EXPECT_EQ((ending{-1, SIGKILL}), service->end_with(SIGKILL));
    // The next keep-alive meets a closed port, which ends the polling thread.
    tool.program.wait_for_threads(threads - 1);
    service = std::make_unique<simulator_process>();
    tool.exchange("1\n", report_of("1"));
    tool.exchange("3\n", settings_menu);
    tool.exchange("0\n", settings_menu);
    tool.exchange("8\n", main_menu);
    leave(tool);
    tool_process next;
    find_the_device(next);
    next.exchange_until("2\n", configuration("On", "0.75", "On", "Right"));
    leave(next);
}

TEST(tool_and_simulator, meet_when_the_service_starts_while_the_tool_still_tries) {
    tool_process tool;
    tool.program.read_until("Attempted to establish connection to port [54321] ret [operation timed out]\n");
    simulator_process service;
    tool.exchange("", banner + main_menu);
    tool.exchange("0\n", "Device Info Updated\n" + main_menu);
    leave(tool);
}

} // namespace
