// The search for a device.
#include "app/discovery.hpp"
#include "app/support/connected_client.hpp"
#include "app/support/wire.hpp"

#include <gtest/gtest.h>

namespace {

using namespace orvanta_tests;
using namespace vantu::orvanta::app;

class discovery : public connected_client {
  protected:
    static std::string orvanta3_devices(unsigned count) {
        std::string operations;
        for (unsigned id = 1; id <= count; ++id) {
            operations += device_added(id, 1, 0x1000 + id, id);
        }
        return operations;
    }
};

std::string row(unsigned position, const std::string& text) {
    return std::string("\t") + std::to_string(position) + "   " + text + "\n";
}

TEST_F(discovery, lists_the_ids_of_all_devices_of_whatever_kind_as_they_were_announced) {
    connect_with(device_added(6, 2, 0x00FF, 0) + device_added(5, 1, 0x1A2B, 0));
    const device_id_list known = list_device_ids(client);
    EXPECT_EQ(0, known.code);
    EXPECT_EQ((std::vector<std::uint32_t>{6, 5}), known.ids);
}

TEST_F(discovery, lists_nothing_when_the_listing_fails) {
    const device_id_list unconnected = list_device_ids(client);
    EXPECT_EQ(3, unconnected.code);
    EXPECT_TRUE(unconnected.ids.empty());
    connect_with(orvanta3_devices(17));
    const device_id_list too_many = list_device_ids(client);
    EXPECT_EQ(9, too_many.code);
    EXPECT_TRUE(too_many.ids.empty());
}

TEST_F(discovery, lists_sixteen_devices) {
    connect_with(orvanta3_devices(16));
    const device_id_list known = list_device_ids(client);
    EXPECT_EQ(0, known.code);
    EXPECT_EQ(16U, known.ids.size());
}

TEST_F(discovery, reports_a_device_with_its_whole_record) {
    connect_with(device_added(5, 1, 0x1A2B, 0x0C) + " FF 17 0D00 00 05000000 0102030405060708 02");
    const device_lookup found = device_report(client, 5);
    EXPECT_EQ(0, found.code);
    EXPECT_EQ(1, found.device.device_type);
    EXPECT_EQ(0x1A2B, found.device.short_id);
    EXPECT_EQ(0x0C, found.device.uuid[15]);
    EXPECT_EQ(2, found.device.detail.orvanta3.handedness);
}

TEST_F(discovery, reports_a_record_of_zeros_and_the_code_when_the_lookup_fails) {
    connect_with(device_added(5, 1, 0x1A2B, 0x0C));
    const device_lookup unknown = device_report(client, 6);
    EXPECT_EQ(7, unknown.code);
    EXPECT_EQ(0, unknown.device.device_type);
    EXPECT_EQ(0, unknown.device.short_id);
    EXPECT_EQ(2, device_report(client, 0).code);
}

TEST_F(discovery, says_why_the_listing_failed) {
    recording_console console;
    EXPECT_EQ(0U, find_orvanta3(console.terminal(), client));
    EXPECT_EQ("Error in find_orvanta3: invalid connection state\n", console.errors());
    EXPECT_EQ("", console.output());
}

TEST_F(discovery, refuses_more_than_sixteen_devices) {
    connect_with(orvanta3_devices(17));
    recording_console console;
    EXPECT_EQ(0U, find_orvanta3(console.terminal(), client));
    EXPECT_EQ("Error in find_orvanta3: an internal buffer is either full or empty\n", console.errors());
    EXPECT_EQ("", console.output());
}

// 255 and 256 are the counts that a byte would cut.
TEST_F(discovery, refuses_255_and_256_devices) {
    connect_with(orvanta3_devices(1));
    for (unsigned id = 2; id <= 255; ++id) {
        service.send(datagram(device_added(id, 1, id, 0)));
        dispatch_one();
    }
    for (const std::string& last :
         {std::string(), std::string(" FF 10 1800 00 00010000 0100 0100 ") + std::string(32, '0')}) {
        if (!last.empty()) {
            service.send(datagram(last));
            dispatch_one();
        }
        recording_console console("0\n");
        EXPECT_EQ(vantu_orvanta_buffer_full_or_empty, list_device_ids(client).code);
        EXPECT_EQ(0U, find_orvanta3(console.terminal(), client));
        EXPECT_EQ("Error in find_orvanta3: an internal buffer is either full or empty\n", console.errors());
        EXPECT_EQ("", console.output());
    }
}

TEST_F(discovery, says_that_there_is_no_device) {
    connect_with("");
    recording_console console;
    EXPECT_EQ(0U, find_orvanta3(console.terminal(), client));
    EXPECT_EQ("No devices found\n", console.errors());
    EXPECT_EQ("", console.output());
}

TEST_F(discovery, never_offers_grips_and_unknown_devices) {
    connect_with(device_added(5, 2, 1, 0) + device_added(6, 0, 2, 0) + device_added(7, 3, 3, 0));
    recording_console console;
    EXPECT_EQ(0U, find_orvanta3(console.terminal(), client));
    EXPECT_EQ("No devices found\n", console.errors());
}

TEST_F(discovery, opens_the_only_orvanta3_without_a_question) {
    connect_with(device_added(5, 1, 0x1A2B, 0) + device_added(6, 2, 0x00FF, 0));
    recording_console console;
    EXPECT_EQ(5U, find_orvanta3(console.terminal(), client));
    EXPECT_EQ("", console.transcript());
    EXPECT_EQ(datagrams{datagram(" FF 12 0600 00 05000000 0000")}, requests(1));
}

TEST_F(discovery, lets_the_user_choose_among_several) {
    connect_with(device_added(5, 1, 0x1A2B, 0) + device_added(6, 1, 0x00FF, 0) +
                 device_added(7, 2, 0x0001, 0));
    recording_console console("1\n");
    EXPECT_EQ(6U, find_orvanta3(console.terminal(), client));
    EXPECT_EQ("Found multiple devices\n" + row(0, "Orvanta3 1a2b") + row(1, "Orvanta3 ff") +
                  "\tSelect option: \t",
              console.output());
    EXPECT_EQ("", console.errors());
    EXPECT_EQ(datagrams{datagram(" FF 12 0600 00 06000000 0000")}, requests(1));
}

TEST_F(discovery, asks_again_when_the_choice_is_no_position) {
    connect_with(device_added(5, 1, 0x1A2B, 0) + device_added(6, 1, 0x00FF, 0));
    recording_console console("2 h H 3 x 0\n");
    EXPECT_EQ(5U, find_orvanta3(console.terminal(), client));
    const std::string select = "\tSelect option: \t";
    const std::string answers = select + select + select + select +
                                "\t\t Selection out of range, please try again\n"
                                "\t\tInvalid input, please provide an number\n" +
                                select + "\t\tInvalid input, please provide an number\n" + select;
    const std::string& output = console.output();
    EXPECT_EQ(answers, output.substr(output.size() - answers.size()));
}

TEST_F(discovery, lists_sixteen_positions) {
    connect_with(orvanta3_devices(16));
    recording_console console("15\n");
    EXPECT_EQ(16U, find_orvanta3(console.terminal(), client));
    EXPECT_NE(std::string::npos, console.output().find("\n\t15   Orvanta3 1010\n\tSelect option: \t"));
}

TEST_F(discovery, lists_a_device_that_vanished_meanwhile_as_nil_and_opens_it_all_the_same) {
    connect_with(device_added(5, 1, 0x1A2B, 0) + device_added(6, 1, 0x00FF, 0));
    service.send(datagram(" FF 11 0400 00 05000000 FF 11 0400 00 06000000"));
    recording_console console("0\n");
    console.on_output = [&](std::string_view text) {
        if (text == "Found multiple devices\n") {
            dispatch_one();
            dispatch_one();
        }
    };
    EXPECT_EQ(5U, find_orvanta3(console.terminal(), client));
    EXPECT_EQ("Found multiple devices\n" + row(0, "Nil 0") + row(1, "Nil 0") + "\tSelect option: \t",
              console.output());
}

TEST_F(discovery, is_silent_when_the_device_cannot_be_opened) {
    connect_with(device_added(5, 1, 0x1A2B, 0) + device_added(6, 1, 0x00FF, 0));
    service.send(datagram(disconnected));
    recording_console console("0\n");
    console.on_output = [&](std::string_view text) {
        if (text == "Found multiple devices\n") {
            dispatch_one();
        }
    };
    EXPECT_EQ(0U, find_orvanta3(console.terminal(), client));
    EXPECT_EQ("", console.errors());
}

} // namespace
