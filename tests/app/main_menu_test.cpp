// The main menu and its actions.
#include "app/menus.hpp"
#include "app/support/connected_client.hpp"
#include "app/support/transcripts.hpp"
#include "app/support/wire.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdexcept>

namespace {

using namespace orvanta_tests;
using namespace vantu::orvanta::app;
using testing::StrEq;
using testing::ThrowsMessage;

const std::string no_devices = "No devices found\n";
const std::string zero_report =
    "\n\tDevice Type:\tNil\n\tID:\t\t0000\n\tUUID:\t\t00000000-00000000-00000000-00000000\n";

class main_menu_loop : public connected_client {
  protected:
    // The transcript of a run that is typed at with the input.
    std::string run(const std::string& input) {
        recording_console console(input);
        console.on_output = on_output;
        session current{console.terminal(), client, state};
        run_main_menu(current);
        return console.transcript();
    }

    std::function<void(std::string_view)> on_output;
};

TEST_F(main_menu_loop, ends_with_exit) {
    EXPECT_EQ(main_menu, run("4\n"));
}

TEST_F(main_menu_loop, refers_to_finding_a_device_as_long_as_there_is_none) {
    std::string expected = main_menu;
    for (int i = 0; i < 6; ++i) {
        expected += no_device_connected + main_menu;
    }
    EXPECT_EQ(expected, run("1 2 3 5 h H 4"));
}

TEST_F(main_menu_loop, prints_that_reference_to_the_error_stream) {
    recording_console console("1 4");
    session current{console.terminal(), client, state};
    run_main_menu(current);
    EXPECT_EQ(no_device_connected, console.errors());
    EXPECT_EQ(main_menu + main_menu, console.output());
}

TEST_F(main_menu_loop, shows_the_menu_again_in_silence_when_a_device_is_connected) {
    state.device_connected = true;
    EXPECT_EQ(main_menu + main_menu + main_menu, run("5 h 4"));
}

TEST_F(main_menu_loop, finds_opens_and_asks_the_device) {
    connect_with(device_added(5, 1, 0x1A2B, 0));
    EXPECT_EQ(main_menu + "Device Info Updated\n" + main_menu, run("0 4"));
    EXPECT_TRUE(state.device_connected);
    EXPECT_EQ(5U, state.current_device_id);
    EXPECT_EQ((datagrams{datagram(" FF 12 0600 00 05000000 0000"), datagram(" FF 2F 0400 00 05000000"),
                         datagram(" FF 42 0400 00 05000000"), datagram(" FF 44 0400 00 05000000")}),
              requests(4));
}

TEST_F(main_menu_loop, takes_the_device_for_connected_after_it_was_asked_and_reported) {
    connect_with(device_added(5, 1, 0x1A2B, 0));
    bool was_connected = true;
    on_output = [&](std::string_view text) {
        if (text == "Device Info Updated\n") {
            was_connected = state.device_connected;
        }
    };
    run("0 4");
    EXPECT_FALSE(was_connected);
    EXPECT_TRUE(state.device_connected);
}

TEST_F(main_menu_loop, throws_without_a_label_when_the_device_cannot_be_asked) {
    for (const std::uint32_t id : {0U, 5U}) {
        EXPECT_THAT([&] { ask_for_configuration(client, id); },
                    ThrowsMessage<vantu::orvanta::exception>(
                        StrEq(id == 0 ? "an invalid argument was provided" : "invalid connection state")));
    }
}

TEST_F(main_menu_loop, closes_the_open_device_before_it_looks_again) {
    connect_with(device_added(5, 1, 0x1A2B, 0));
    state.current_device_id = 9;
    state.device_connected = true;
    EXPECT_EQ(main_menu + "Device Info Updated\n" + main_menu, run("0 4"));
    EXPECT_EQ(datagram(" FF 14 0400 00 09000000"), requests(5).at(0));
    EXPECT_EQ(datagram(" FF 12 0600 00 05000000 0000"), requests(5).at(1));
    EXPECT_EQ(5U, state.current_device_id);
}

TEST_F(main_menu_loop, says_twice_that_nothing_was_found) {
    connect_with("");
    EXPECT_EQ(main_menu + no_devices + no_devices + main_menu, run("0 4"));
    EXPECT_FALSE(state.device_connected);
}

TEST_F(main_menu_loop, stays_connected_without_a_device_when_a_second_search_finds_nothing) {
    connect_with("");
    state.current_device_id = 5;
    state.device_connected = true;
    EXPECT_EQ(main_menu + no_devices + no_devices + main_menu + no_devices + main_menu + zero_report +
                  main_menu,
              run("0 2 1 4"));
    EXPECT_TRUE(state.device_connected);
    EXPECT_EQ(0U, state.current_device_id);
}

TEST_F(main_menu_loop, refuses_to_close_nothing) {
    connect_with("");
    state.current_device_id = 0;
    state.device_connected = true;
    EXPECT_THAT([&] { run("0 4"); }, ThrowsMessage<vantu::orvanta::exception>(
                                         StrEq("client.device_close: an invalid argument was provided")));
}

TEST_F(main_menu_loop, says_once_that_the_only_device_could_not_be_opened) {
    connect_with(device_added(5, 1, 0x1A2B, 0) + device_added(6, 1, 0x00FF, 0));
    service.send(datagram(disconnected));
    on_output = [&](std::string_view text) {
        if (text == "\tSelect option: \t") {
            dispatch_one();
        }
    };
    const std::string transcript = run("0 0 4");
    const std::string end = "\tSelect option: \t" + no_devices + main_menu;
    EXPECT_EQ(end, transcript.substr(transcript.size() - end.size()));
    EXPECT_EQ(0U, state.current_device_id);
}

TEST_F(main_menu_loop, prints_the_stored_record_without_a_request) {
    connect_with(device_added(5, 1, 0x00FF, 0xAB));
    state.current_device_id = 5;
    state.device_connected = true;
    EXPECT_EQ(main_menu +
                  "\n\tDevice Type:\tOrvanta3\n\tID:\t\t00FF\n"
                  "\tUUID:\t\tABABABAB-ABABABAB-ABABABAB-ABABABAB\n" +
                  main_menu,
              run("1 4"));
    vantu_orvanta_device_close(client.context(), 5, 0);
    EXPECT_EQ(datagrams{datagram(" FF 14 0400 00 05000000")}, requests(1));
}

TEST_F(main_menu_loop, prints_a_report_of_zeros_for_a_device_that_is_gone) {
    connect_with("");
    state.current_device_id = 5;
    state.device_connected = true;
    EXPECT_EQ(main_menu + zero_report + main_menu, run("1 4"));
}

TEST_F(main_menu_loop, prints_the_configuration_from_slots_and_record_without_a_request) {
    connect_with(device_added(5, 1, 0x00FF, 0xAB) + " FF 17 0D00 00 05000000 0000000000000000 01");
    state.current_device_id = 5;
    state.device_connected = true;
    state.orientation.store({1.0F, 0.5F, -0.5F, 0.0F});
    state.gravity_compensation.store({1, 0.75F});
    state.torque_scaling.store({1});
    EXPECT_EQ(main_menu +
                  "\n\tOrientation:\n\t   r =  1.0000\n\t   x =  0.5000\n\t   y = -0.5000\n\t   z =  0.0000\n"
                  "\n\tGravity Compensation: \tOn\n\t   Scaling Factor:\t0.75\n"
                  "\n\tTorque Scaling:\t\tOn\n"
                  "\n\tHandedness:\t\tRight\n" +
                  main_menu,
              run("2 4"));
    vantu_orvanta_device_close(client.context(), 5, 0);
    EXPECT_EQ(datagrams{datagram(" FF 14 0400 00 05000000")}, requests(1));
}

TEST_F(main_menu_loop, prints_no_configuration_of_a_device_that_is_gone) {
    connect_with("");
    state.current_device_id = 5;
    state.device_connected = true;
    EXPECT_EQ(main_menu + no_device_connected + main_menu, run("2 4"));
}

TEST_F(main_menu_loop, opens_the_settings_and_comes_back) {
    state.device_connected = true;
    EXPECT_EQ(main_menu + settings_menu + main_menu, run("3 8 4"));
}

TEST_F(main_menu_loop, throws_with_a_label_when_the_device_cannot_be_closed) {
    state.current_device_id = 5;
    state.device_connected = true;
    EXPECT_THAT([&] { run("0 4"); }, ThrowsMessage<vantu::orvanta::exception>(
                                         StrEq("client.device_close: invalid connection state")));
}

TEST_F(main_menu_loop, throws_at_the_end_of_input) {
    EXPECT_THAT([&] { run("1"); }, ThrowsMessage<std::invalid_argument>(StrEq("invalid stoi argument")));
}

TEST_F(main_menu_loop, throws_for_a_choice_beyond_32_bits) {
    EXPECT_THAT([&] { run("99999999999"); },
                ThrowsMessage<std::out_of_range>(StrEq("stoi argument out of range")));
}

} // namespace
