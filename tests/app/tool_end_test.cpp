// How the tool ends other than by its menu.
#include "app/support/fake_service.hpp"
#include "app/support/tool_process.hpp"
#include "app/support/wire.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace orvanta_tests;
using testing::HasSubstr;
using testing::Not;

class tool_end : public testing::Test {
  protected:
    tool_end() { service.accept_with(device_added(5, 1, 0x1A2B, 0)); }

    void find_the_device(tool_process& tool) { tool.exchange("0\n", "Device Info Updated\n" + main_menu); }

    // The service says goodbye; the polling thread's end shows that the tool has noticed.
    void say_goodbye(tool_process& tool) {
        const std::size_t threads = tool.program.threads();
        service.send(datagram(disconnected));
        tool.program.wait_for_threads(threads - 1);
    }

    fake_service service{service_port};
};

TEST_F(tool_end, comes_with_the_end_of_input_at_a_selection) {
    tool_process tool(attachment::pipes);
    tool.exchange("", banner + main_menu);
    tool.program.close_input();
    tool.expect_end(aborted);
    EXPECT_THAT(tool.program.rest_of_errors(), HasSubstr("invalid stoi argument"));
}

TEST_F(tool_end, comes_with_the_end_of_input_at_a_number) {
    tool_process tool(attachment::pipes);
    tool.exchange("", banner + main_menu);
    find_the_device(tool);
    tool.exchange("3 2 ", settings_menu + scaling_prompt);
    tool.program.close_input();
    tool.expect_end(aborted);
    EXPECT_THAT(tool.program.rest_of_errors(), HasSubstr("invalid stof argument"));
}

TEST_F(tool_end, comes_with_a_number_beyond_32_bits) {
    tool_process tool(attachment::pipes);
    tool.exchange("", banner + main_menu);
    tool.program.type("99999999999\n");
    tool.expect_end(aborted);
    EXPECT_THAT(tool.program.rest_of_errors(), HasSubstr("stoi argument out of range"));
}

TEST_F(tool_end, comes_with_a_factor_beyond_a_float) {
    tool_process tool(attachment::pipes);
    tool.exchange("", banner + main_menu);
    find_the_device(tool);
    tool.exchange("3\n", settings_menu);
    tool.exchange("2\n", scaling_prompt);
    tool.program.type(std::string(50, '9'));
    tool.program.type("\n");
    tool.expect_end(aborted);
    EXPECT_THAT(tool.program.rest_of_errors(), HasSubstr("stof argument out of range"));
}

TEST_F(tool_end, loses_nothing_printed_when_it_is_abrupt) {
    tool_process tool(attachment::one_pipe);
    tool.program.type("0 3 9 8 1");
    tool.program.close_input();
    const ending seen = tool.program.wait();
    EXPECT_EQ(aborted, seen);
    const std::string expected = banner + main_menu + "Device Info Updated\n" + main_menu + settings_menu +
                                 settings_menu + main_menu +
                                 "\n\tDevice Type:\tOrvanta3\n\tID:\t\t1A2B\n"
                                 "\tUUID:\t\t00000000-00000000-00000000-00000000\n" +
                                 main_menu;
    const std::string printed = without_log_lines(tool.program.rest());
    EXPECT_EQ(expected, printed.substr(0, expected.size()));
    EXPECT_THAT(printed.substr(expected.size()), HasSubstr("invalid stoi argument"));
}

TEST_F(tool_end, says_no_goodbye_to_the_service_when_it_is_abrupt) {
    tool_process tool(attachment::pipes);
    tool.exchange("", banner + main_menu);
    tool.program.close_input();
    tool.expect_end(aborted);
    // A second tool's goodbye is the first to arrive.
    tool_process next(attachment::pipes);
    next.exchange("", banner + main_menu);
    next.program.type("4\n");
    next.expect_end(succeeded);
    const datagrams all = service.first_requests(3);
    ASSERT_EQ(3U, all.size());
    EXPECT_EQ(3, all[1].at(7));
    EXPECT_EQ(datagram(" FF 05 0000 00"), all[2]);
}

TEST_F(tool_end, waits_for_the_service_to_confirm_its_goodbye_no_longer_than_a_moment) {
    service.answer(5, datagram(" FF F0 0500 00 00000000 C0"));
    tool_process tool;
    tool.exchange("", banner + main_menu);
    tool.program.type("4\n");
    tool.expect_end(succeeded);
    EXPECT_EQ(datagram(" FF 05 0000 00"), service.next(5));
}

TEST_F(tool_end, comes_with_the_close_of_a_device_after_the_service_said_goodbye) {
    tool_process tool(attachment::one_pipe);
    tool.exchange("", banner + main_menu);
    find_the_device(tool);
    say_goodbye(tool);
    tool.program.type("0\n");
    EXPECT_EQ(aborted, tool.program.wait());
    EXPECT_THAT(tool.program.rest(), HasSubstr("client.device_close: invalid connection state\n"));
}

TEST_F(tool_end, comes_with_a_setting_after_the_service_said_goodbye) {
    tool_process tool(attachment::one_pipe);
    tool.exchange("", banner + main_menu);
    find_the_device(tool);
    tool.exchange("3\n", settings_menu);
    say_goodbye(tool);
    tool.program.type("1\n");
    EXPECT_EQ(aborted, tool.program.wait());
    EXPECT_THAT(tool.program.rest(), HasSubstr("invalid connection state\n"));
    EXPECT_THAT(tool.program.rest(), Not(HasSubstr("client.")));
}

TEST_F(tool_end, comes_with_a_device_of_id_zero_before_any_is_chosen) {
    tool_process tool(attachment::pipes);
    tool.exchange("", banner + main_menu);
    service.send(datagram(device_added(0, 1, 1, 0)));
    tool.expect_end(aborted);
    EXPECT_THAT(tool.program.rest_of_errors(),
                HasSubstr("client.device_open: an invalid argument was provided"));
}

TEST_F(tool_end, is_orderly_after_the_service_said_goodbye) {
    tool_process tool(attachment::one_pipe);
    tool.exchange("", banner + main_menu);
    say_goodbye(tool);
    tool.exchange("0\n", "Error in find_orvanta3: invalid connection state\nNo devices found\n" + main_menu);
    tool.exchange("1\n", no_device_connected + main_menu);
    tool.program.type("4\n");
    tool.expect_end(succeeded);
}

} // namespace
