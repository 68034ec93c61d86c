// A session that goes through every menu of the tool, to the byte.
#pragma once

#include "app/support/fake_service.hpp"
#include "app/support/tool_process.hpp"
#include "app/support/wire.hpp"

#include <gtest/gtest.h>

namespace orvanta_tests {

inline const std::string device_report = "\n\tDevice Type:\tOrvanta3\n\tID:\t\t1A2B\n"
                                         "\tUUID:\t\tCDCDCDCD-CDCDCDCD-CDCDCDCD-CDCDCDCD\n";

inline const std::string found_configuration =
    "\n\tOrientation:\n\t   r =  1.0000\n\t   x =  0.5000\n\t   y = -0.5000\n\t   z =  0.0000\n"
    "\n\tGravity Compensation: \tOn\n\t   Scaling Factor:\t0.75\n"
    "\n\tTorque Scaling:\t\tOff\n"
    "\n\tHandedness:\t\tRight\n";

inline const std::string changed_configuration =
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

} // namespace orvanta_tests
