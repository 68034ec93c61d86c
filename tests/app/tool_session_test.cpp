// Whole sessions with the tool, to the byte.
#include "app/support/whole_session.hpp"

#include <gtest/gtest.h>

namespace {

using namespace orvanta_tests;

TEST_F(session, goes_through_every_menu_at_a_pipe) {
    whole_session(attachment::one_pipe);
}

TEST_F(session, sends_these_requests_and_no_other) {
    whole_session(attachment::one_pipe);
    const datagrams all = service.first_requests(14);
    const datagrams without_connect(all.begin() + 1, all.end());
    const datagrams expected{
        datagram(" FF 12 0600 00 05000000 0000"),
        datagram(" FF 2F 0400 00 05000000"),
        datagram(" FF 42 0400 00 05000000"),
        datagram(" FF 44 0400 00 05000000"),
        datagram(" FF 43 0900 00 05000000 01 0000403F"),
        datagram(" FF 43 0900 00 05000000 00 0000003F"),
        datagram(" FF 43 0900 00 05000000 00 0000803E"),
        datagram(" FF 45 0500 00 05000000 00"),
        datagram(" FF 45 0500 00 05000000 01"),
        datagram(" FF 47 0500 00 05000000 02"),
        datagram(" FF 47 0500 00 05000000 01"),
        datagram(" FF 40 0400 00 05000000"),
        datagram(" FF 05 0000 00"),
    };
    EXPECT_EQ(expected, without_connect);
}

TEST_F(session, separates_output_from_errors) {
    tool_process tool(attachment::pipes);
    tool.exchange("", banner + main_menu);
    tool.exchange("1\n", main_menu);
    EXPECT_EQ(no_device_connected, tool.program.read_errors_until("\n"));
    tool.program.type("4\n");
    tool.expect_end(succeeded);
    EXPECT_EQ("", tool.program.rest_of_errors());
}

TEST_F(session, answers_a_whole_line_of_choices_prompt_by_prompt) {
    tool_process tool;
    tool.exchange("", banner + main_menu);
    tool.exchange("1 \t 6 x\n\n  h\n", no_device_connected + main_menu +
                                           "\t Selection out of range, please try again\n"
                                           "\tInvalid input, please provide an number\nSelect option: \t"
                                           "\tInvalid input, please provide an number\nSelect option: \t" +
                                           no_device_connected + main_menu);
    tool.program.type("4 4 4");
    tool.expect_end(succeeded);
}

TEST_F(session, ends_with_the_last_word_of_an_input_without_a_line_end) {
    tool_process tool;
    tool.program.type("0 3 8 4");
    tool.program.close_input();
    tool.expect_end(succeeded,
                    banner + main_menu + "Device Info Updated\n" + main_menu + settings_menu + main_menu);
}

} // namespace
