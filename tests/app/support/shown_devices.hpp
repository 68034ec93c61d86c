// The simulator's devices as the tool shows them, and ways through the tool's menus.
#pragma once

#include "app/support/tool_process.hpp"
#include "support/service_process.hpp"

#include <gtest/gtest.h>
#include <string>

namespace orvanta_tests {

inline std::string report_of(const std::string& number) {
    return "\n\tDevice Type:\tOrvanta3\n\tID:\t\t300" + number +
           "\n\tUUID:\t\t6E2B8410-5F3C4D71-9A03C538-0000000" + number + "\n" + main_menu;
}

// The orientation moves all the time: its numbers are not compared.
inline std::string configuration(const std::string& gravity, const std::string& factor,
                                 const std::string& torque, const std::string& hand) {
    return "\n\tOrientation:\n\t   r =  0.0000\n\t   x =  0.0000\n\t   y =  0.0000\n\t   z =  0.0000\n"
           "\n\tGravity Compensation: \t" +
           gravity + "\n\t   Scaling Factor:\t" + factor + "\n\n\tTorque Scaling:\t\t" + torque +
           "\n\n\tHandedness:\t\t" + hand + "\n" + main_menu;
}

inline void leave(tool_process& tool) {
    tool.program.type("4\n");
    const ending seen = tool.program.wait();
    EXPECT_EQ(succeeded, seen);
}

inline void find_the_device(tool_process& tool) {
    tool.exchange("", banner + main_menu);
    tool.exchange("0\n", "Device Info Updated\n" + main_menu);
}

inline void configure_the_device(attachment kind) {
    service_process service;
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
    EXPECT_EQ(succeeded, service.end());
}

} // namespace orvanta_tests
