// The tool at a terminal, at signals, and at a port that the system reports closed.
#include "app/support/shown_devices.hpp"
#include "app/support/whole_session.hpp"

#include <csignal>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>

namespace {

using namespace orvanta_tests;
using testing::HasSubstr;

TEST_F(session, goes_through_every_menu_at_a_terminal) {
    whole_session(attachment::pseudo_terminal);
}

TEST(tool_and_simulator, configure_a_device_at_a_terminal) {
    configure_the_device(attachment::pseudo_terminal);
}

TEST(tool_and_simulator, survive_a_service_that_is_killed_and_started_again) {
    auto service = std::make_unique<service_process>();
    tool_process tool;
    find_the_device(tool);
    const std::size_t threads = tool.program.threads();
    service->kill();
    // The next keep-alive meets a closed port, which ends the polling thread.
    tool.program.wait_for_threads(threads - 1);
    service = std::make_unique<service_process>();
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

class tool_end_on_posix : public testing::Test {
  protected:
    tool_end_on_posix() { service.accept_with(device_added(5, 1, 0x1A2B, 0)); }

    fake_service service{service_port};
};

TEST_F(tool_end_on_posix, comes_with_the_end_of_input_at_a_terminal) {
    tool_process tool(attachment::pseudo_terminal);
    tool.exchange("", banner + main_menu);
    tool.exchange("\n\n", "");
    tool.program.type("\x04");
    const ending seen = tool.program.wait();
    EXPECT_EQ(aborted, seen);
    EXPECT_THAT(tool.program.rest(), HasSubstr("invalid stoi argument"));
}

TEST_F(tool_end_on_posix, is_that_of_any_program_whose_output_is_closed) {
    tool_process tool(attachment::pipes);
    tool.exchange("", banner + main_menu);
    tool.program.close_output();
    tool.program.type("5\n");
    EXPECT_EQ((ending{-1, SIGPIPE}), tool.program.wait());
}

// A shell has the commands that it runs in the background ignore interrupts; they inherit that.
TEST_F(tool_end_on_posix, comes_with_an_interrupt_from_the_terminal) {
    const auto inherited = std::signal(SIGINT, SIG_IGN);
    tool_process tool(attachment::pseudo_terminal);
    std::signal(SIGINT, inherited);
    tool.exchange("", banner + main_menu);
    tool.program.type("\x03");
    EXPECT_EQ((ending{-1, SIGINT}), tool.program.wait());
}

} // namespace
