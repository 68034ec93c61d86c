// The menu "Device Settings".
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

class settings_menu_loop : public connected_client {
  protected:
    void SetUp() override {
        connect_with("");
        state.current_device_id = 5;
        state.device_connected = true;
        state.gravity_compensation.store({1, 0.75F});
    }

    std::string run(const std::string& input) {
        recording_console console(input);
        console.on_output = on_output;
        session current{console.terminal(), client, state};
        run_settings_menu(current);
        errors = console.errors();
        return console.transcript();
    }

    // The one request that a choice sends.
    bytes request_of(const std::string& input) {
        EXPECT_EQ(settings_menu + settings_menu, run(input + " 8"));
        return requests(1).at(0);
    }

    std::function<void(std::string_view)> on_output;
    std::string errors;
};

TEST_F(settings_menu_loop, disables_gravity_compensation_and_keeps_its_factor) {
    EXPECT_EQ(datagram(" FF 43 0900 00 05000000 00 0000403F"), request_of("0"));
}

TEST_F(settings_menu_loop, enables_gravity_compensation_and_keeps_its_factor) {
    EXPECT_EQ(datagram(" FF 43 0900 00 05000000 01 0000403F"), request_of("1"));
}

TEST_F(settings_menu_loop, changes_the_factor_and_keeps_gravity_compensation_on) {
    EXPECT_EQ(settings_menu + scaling_prompt + settings_menu, run("2 0.5 8"));
    EXPECT_EQ(datagrams{datagram(" FF 43 0900 00 05000000 01 0000003F")}, requests(1));
}

TEST_F(settings_menu_loop, changes_the_factor_and_keeps_gravity_compensation_off) {
    state.gravity_compensation.store({0, 0.75F});
    EXPECT_EQ(settings_menu + scaling_prompt + settings_menu, run("2 1000 8"));
    EXPECT_EQ(datagrams{datagram(" FF 43 0900 00 05000000 00 00007A44")}, requests(1));
}

TEST_F(settings_menu_loop, sends_nothing_when_the_factor_is_cancelled) {
    EXPECT_EQ(settings_menu + scaling_prompt + settings_menu + settings_menu, run("2 cancel 7 8"));
    EXPECT_EQ(datagrams{datagram(" FF 40 0400 00 05000000")}, requests(1));
}

TEST_F(settings_menu_loop, asks_again_for_a_factor_that_is_no_number) {
    EXPECT_EQ(settings_menu + scaling_prompt + "\t\t\tInvalid input, please provide a number\n" +
                  scaling_prompt + settings_menu,
              run("2 Cancel 0.5 8"));
    EXPECT_EQ(1U, requests(1).size());
}

TEST_F(settings_menu_loop, disables_torque_scaling) {
    EXPECT_EQ(datagram(" FF 45 0500 00 05000000 00"), request_of("3"));
}

TEST_F(settings_menu_loop, enables_torque_scaling) {
    EXPECT_EQ(datagram(" FF 45 0500 00 05000000 01"), request_of("4"));
}

TEST_F(settings_menu_loop, sets_the_left_hand) {
    EXPECT_EQ(datagram(" FF 47 0500 00 05000000 02"), request_of("5"));
}

TEST_F(settings_menu_loop, sets_the_right_hand) {
    EXPECT_EQ(datagram(" FF 47 0500 00 05000000 01"), request_of("6"));
}

TEST_F(settings_menu_loop, saves_the_configuration) {
    EXPECT_EQ(datagram(" FF 40 0400 00 05000000"), request_of("7"));
}

TEST_F(settings_menu_loop, shows_the_menu_again_for_nine_and_for_help) {
    EXPECT_EQ(settings_menu + settings_menu + settings_menu + settings_menu, run("9 h H 8"));
}

TEST_F(settings_menu_loop, asks_again_without_indentation_for_what_is_no_choice) {
    EXPECT_EQ(settings_menu +
                  "\t Selection out of range, please try again\n\tInvalid input, please provide an number\n"
                  "Select option: \t",
              run("10 8"));
}

TEST_F(settings_menu_loop, ends_in_silence_when_no_device_is_connected) {
    state.device_connected = false;
    EXPECT_EQ("", run("8"));
}

TEST_F(settings_menu_loop, ends_in_silence_when_the_device_went_while_it_waited) {
    on_output = [&](std::string_view text) {
        if (text == "Select option: \t") {
            state.device_connected = false;
        }
    };
    EXPECT_EQ(settings_menu, run("9 8"));
    EXPECT_EQ("", errors);
}

TEST_F(settings_menu_loop, still_carries_out_the_choice_when_the_device_went_while_it_waited) {
    on_output = [&](std::string_view text) {
        if (text == "Select option: \t") {
            state.device_connected = false;
        }
    };
    EXPECT_EQ(settings_menu, run("7"));
    EXPECT_EQ(datagrams{datagram(" FF 40 0400 00 05000000")}, requests(1));
}

TEST_F(settings_menu_loop, says_that_the_device_went_at_the_last_moment_and_shows_the_menu) {
    on_output = [&](std::string_view text) {
        if (text == "\n") {
            state.device_connected = false;
        }
    };
    EXPECT_EQ("\nDevice disconnected\n" + settings_options, run("9"));
    EXPECT_EQ("Device disconnected\n", errors);
}

TEST_F(settings_menu_loop, throws_without_a_label_when_a_request_cannot_be_sent) {
    service.send(datagram(disconnected));
    dispatch_one();
    for (const char* input : {"0", "1", "2 0.5", "3", "4", "5", "6", "7"}) {
        EXPECT_THAT([&] { run(input); },
                    ThrowsMessage<vantu::orvanta::exception>(StrEq("invalid connection state")))
            << input;
    }
}

TEST_F(settings_menu_loop, throws_when_the_device_is_none) {
    state.current_device_id = 0;
    EXPECT_THAT([&] { run("7"); },
                ThrowsMessage<vantu::orvanta::exception>(StrEq("an invalid argument was provided")));
}

TEST_F(settings_menu_loop, throws_at_the_end_of_input) {
    EXPECT_THAT([&] { run("2"); }, ThrowsMessage<std::invalid_argument>(StrEq("invalid stof argument")));
    EXPECT_THAT([&] { run("9"); }, ThrowsMessage<std::invalid_argument>(StrEq("invalid stoi argument")));
}

} // namespace
