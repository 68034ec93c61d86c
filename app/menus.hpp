// The two menus: their rows and the loops that serve them.
#pragma once

#include "app/session.hpp"

#include <array>
#include <cstddef>
#include <cstdint>

namespace vantu::orvanta::app {

inline constexpr std::array<const char*, 5> main_menu_options{
    "Find Orvanta3", "Get Device Info", "Get Device Configuration", "Device Settings", "Exit",
};

enum class main_choice : std::uint64_t {
    find_orvanta3,
    get_device_info,
    get_device_configuration,
    device_settings,
    exit,
};
static_assert(static_cast<std::size_t>(main_choice::exit) + 1 == main_menu_options.size());

inline constexpr std::array<const char*, 9> settings_menu_options{
    "Disable Gravity Compensation", "Enable Gravity Compensation", "Change Gravity Compensation Scaling",
    "Disable Torque Scaling",       "Enable Torque Scaling",       "Set Device to Left Handed",
    "Set Device to Right Handed",   "Save Configuration",          "Return",
};

enum class settings_choice : std::uint64_t {
    disable_gravity_compensation,
    enable_gravity_compensation,
    change_gravity_compensation_scaling,
    disable_torque_scaling,
    enable_torque_scaling,
    set_left_handed,
    set_right_handed,
    save_configuration,
    leave,
};
static_assert(static_cast<std::size_t>(settings_choice::leave) + 1 == settings_menu_options.size());

// Serves the main menu until "Exit" is chosen. Throws exception when a request cannot be sent, and the
// exceptions of the prompts at the end of input.
void run_main_menu(session& current);

// Serves the menu "Device Settings" until "Return" is chosen or the device is gone. Each setting is a request
// whose answer is not awaited; throws exception when one cannot be sent.
void run_settings_menu(session& current);

// Asks the device for the configuration that "Get Device Configuration" shows. The answers are not awaited.
// Throws exception, without a label, when a request cannot be sent.
void ask_for_configuration(const client& connection, std::uint32_t id);

} // namespace vantu::orvanta::app
