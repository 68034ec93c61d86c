// Devices that come, go and are many, as the user of the tool sees them.
#include "app/support/fake_service.hpp"
#include "app/support/tool_process.hpp"
#include "app/support/wire.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>

namespace {

using namespace orvanta_tests;
using testing::HasSubstr;

const std::string no_devices = "No devices found\n";

class tool_devices : public testing::Test {
  protected:
    void start_with(const std::string& operations) {
        service.accept_with(operations);
        tool = std::make_unique<tool_process>();
        tool->exchange("", banner + main_menu);
    }

    void find_the_device() { tool->exchange("0\n", "Device Info Updated\n" + main_menu); }

    // Sends operations and waits until the tool has dealt with them.
    void tell(const std::string& operations) {
        service.send(datagram(operations + " FF F0 0500 00 00000000 C0"));
        tool->exchange("", "\nError from on_error: invalid device identifier\n");
    }

    void leave() {
        tool->program.type("4\n");
        tool->expect_end(succeeded);
    }

    fake_service service{service_port};
    std::unique_ptr<tool_process> tool;
};

TEST_F(tool_devices, none_is_said_twice) {
    start_with("");
    tool->exchange("0\n", no_devices + no_devices + main_menu);
    leave();
}

TEST_F(tool_devices, a_device_listed_later_is_found_then) {
    start_with("");
    tool->exchange("0\n", no_devices + no_devices + main_menu);
    tell(device_added(5, 1, 0x1A2B, 0));
    find_the_device();
    leave();
}

TEST_F(tool_devices, seventeen_are_more_than_it_takes) {
    std::string operations;
    for (unsigned id = 1; id <= 17; ++id) {
        operations += device_added(id, 1, id, id);
    }
    start_with(operations);
    tool->exchange("0\n", "Error in find_orvanta3: an internal buffer is either full or empty\n" +
                              no_devices + main_menu);
    leave();
}

TEST_F(tool_devices, two_are_offered_until_one_of_them_is_chosen) {
    start_with(device_added(5, 1, 0x1A2B, 0) + device_added(6, 1, 0x00FF, 0));
    tool->exchange("0\n",
                   "Found multiple devices\n\t0   Orvanta3 1a2b\n\t1   Orvanta3 ff\n\tSelect option: \t");
    tool->exchange("2\n", "\tSelect option: \t");
    tool->exchange("h\n", "\tSelect option: \t");
    tool->exchange("3\n", "\t\t Selection out of range, please try again\n"
                          "\t\tInvalid input, please provide an number\n\tSelect option: \t");
    tool->exchange("1\n", "Device Info Updated\n" + main_menu);
    EXPECT_EQ(datagram(" FF 12 0600 00 06000000 0000"), service.next(18));
    leave();
}

TEST_F(tool_devices, a_removed_one_is_opened_again_when_it_is_listed_again) {
    start_with(device_added(5, 1, 0x1A2B, 0));
    find_the_device();
    (void)service.next(18);
    tell(" FF 11 0400 00 05000000");
    tool->exchange("1\n", no_device_connected + main_menu);
    tell(device_added(5, 1, 0x1A2C, 0xEE));
    EXPECT_EQ(datagram(" FF 12 0600 00 05000000 0000"), service.next(18));
    tool->exchange("1\n", "\n\tDevice Type:\tOrvanta3\n\tID:\t\t1A2C\n"
                          "\tUUID:\t\tEEEEEEEE-EEEEEEEE-EEEEEEEE-EEEEEEEE\n" +
                              main_menu);
    leave();
}

TEST_F(tool_devices, another_one_removed_changes_nothing) {
    start_with(device_added(5, 1, 0x1A2B, 0xEE) + device_added(6, 2, 0x00FF, 0));
    find_the_device();
    tell(" FF 11 0400 00 06000000");
    tool->exchange("1\n", "\n\tDevice Type:\tOrvanta3\n\tID:\t\t1A2B\n"
                          "\tUUID:\t\tEEEEEEEE-EEEEEEEE-EEEEEEEE-EEEEEEEE\n" +
                              main_menu);
    leave();
}

TEST_F(tool_devices, one_removed_while_its_settings_are_open_leads_back_to_the_main_menu) {
    start_with(device_added(5, 1, 0x1A2B, 0));
    find_the_device();
    tool->exchange("3\n", settings_menu);
    tell(" FF 11 0400 00 05000000");
    tool->exchange("9\n", main_menu);
    tool->exchange("3\n", no_device_connected + main_menu);
    leave();
}

TEST_F(tool_devices, a_second_search_closes_the_first_device) {
    start_with(device_added(5, 1, 0x1A2B, 0));
    find_the_device();
    find_the_device();
    EXPECT_EQ(datagram(" FF 14 0400 00 05000000"), service.next(20));
    leave();
}

TEST_F(tool_devices, an_open_one_is_not_closed_by_exit) {
    start_with(device_added(5, 1, 0x1A2B, 0));
    find_the_device();
    leave();
    EXPECT_EQ(datagram(" FF 05 0000 00"), service.next(5));
    EXPECT_EQ(6U, service.requests().size());
}

TEST_F(tool_devices, a_refused_setting_is_reported_by_the_service_alone) {
    start_with(device_added(5, 1, 0x1A2B, 0));
    find_the_device();
    service.answer(67, datagram(" FF F0 0500 00 05000000 A3"));
    tool->exchange("3\n", settings_menu);
    tool->exchange("2\n", scaling_prompt);
    tool->program.type("1000\n");
    const std::string report = "\nError from on_error: invalid argument\n";
    const std::string printed = tool->program.read_until(
        [&](const std::string& text) { return text.size() >= settings_menu.size() + report.size(); });
    EXPECT_THAT(printed, HasSubstr(report));
    tool->exchange("8\n", main_menu);
    leave();
}

} // namespace
