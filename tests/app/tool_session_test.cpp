// Whole sessions with the tool, to the byte.
#include "app/support/fake_service.hpp"
#include "app/support/tool_process.hpp"
#include "app/support/wire.hpp"

#include <gtest/gtest.h>

namespace {

using namespace orvanta_test;

const std::string device_report = "\n\tDevice Type:\tOrvanta3\n\tID:\t\t1A2B\n"
                                  "\tUUID:\t\tCDCDCDCD-CDCDCDCD-CDCDCDCD-CDCDCDCD\n";

const std::string found_configuration =
    "\n\tOrientation:\n\t   r =  1.0000\n\t   x =  0.5000\n\t   y = -0.5000\n\t   z =  0.0000\n"
    "\n\tGravity Compensation: \tOn\n\t   Scaling Factor:\t0.75\n"
    "\n\tTorque Scaling:\t\tOff\n"
    "\n\tHandedness:\t\tRight\n";

const std::string changed_configuration =
    "\n\tOrientation:\n\t   r =  1.0000\n\t   x =  0.5000\n\t   y = -0.5000\n\t   z =  0.0000\n"
    "\n\tGravity Compensation: \tOff\n\t   Scaling Factor:\t0.50\n"
    "\n\tTorque Scaling:\t\tOn\n"
    "\n\tHandedness:\t\tLeft\n";

class session : public testing::Test {
  protected:
    session() {
        service.accept_with(device_added(5, 1, 0x1A2B, 0xCD) + device_added(6, 2, 0x0001, 0) +
                            " FF 17 0D00 00 05000000 0000000000000000 01");
        service.answer(18, datagram(" FF 13 0400 00 05000000"));
        service.answer(47, datagram(" FF 2F 1400 00 05000000 0000803F 0000003F 000000BF 00000000"));
        service.answer(66, datagram(" FF 42 0900 00 05000000 01 0000403F"));
        service.answer(68, datagram(" FF 44 0500 00 05000000 00"));
        service.answer(67, datagram(" FF 42 0900 00 05000000 00 0000003F"));
        service.answer(69, datagram(" FF 44 0500 00 05000000 01"));
        service.answer(71, datagram(" FF 46 0500 00 05000000 02"
                                    " FF 17 0D00 00 05000000 0000000000000000 02"));
        service.answer(64, datagram(" FF 40 0500 00 05000000 01"));
    }

    // Has the tool print an error: once it is there, everything sent before has been dealt with.
    void settle(tool_process& tool) {
        service.send(datagram(" FF F0 0500 00 05000000 B1"));
        tool.exchange("", "\nError from on_error: device was not opened\n");
    }

    void whole_session(attachment kind) {
        tool_process tool(kind);
        tool.exchange("", banner + main_menu);
        EXPECT_EQ(2U, tool.logged().size());
        tool.exchange("1\n", no_device_connected + main_menu);
        tool.exchange("0\n", "Device Info Updated\n" + main_menu);
        (void)service.next(68);
        settle(tool);
        tool.exchange("1\n", device_report + main_menu);
        tool.exchange("2\n", found_configuration + main_menu);
        tool.exchange("3\n", settings_menu);
        tool.exchange("1\n", settings_menu);
        (void)service.next(67);
        settle(tool);
        tool.exchange("0\n", settings_menu);
        tool.exchange("2\n", scaling_prompt);
        tool.exchange("0.25\n", settings_menu);
        tool.exchange("3\n", settings_menu);
        tool.exchange("4\n", settings_menu);
        tool.exchange("5\n", settings_menu);
        tool.exchange("6\n", settings_menu);
        tool.exchange("7\n", settings_menu);
        (void)service.next(64);
        settle(tool);
        tool.exchange("8\n", main_menu);
        tool.exchange("2\n", changed_configuration + main_menu);
        tool.exchange("h\n", main_menu);
        tool.exchange("x\n", "\tInvalid input, please provide an number\nSelect option: \t");
        tool.program.type("4\n");
        tool.expect_end(succeeded, kind == attachment::pseudo_terminal ? "4\n" : "");
        EXPECT_EQ(2U, tool.logged().size());
    }

    fake_service service{service_port};
};

TEST_F(session, goes_through_every_menu_at_a_pipe) {
    whole_session(attachment::one_pipe);
}

TEST_F(session, goes_through_every_menu_at_a_terminal) {
    whole_session(attachment::pseudo_terminal);
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
