// The menu "Device Settings".
#include "app/menus.hpp"

#include "vantu/orvanta/orvanta.h"

#include <optional>

namespace vantu::orvanta::app {
namespace {

constexpr const char* scaling_prompt =
    "Provide a new scaling factor (default = 0.75) [type 'cancel' to cancel]";

void set_gravity_compensation(session& current, std::uint8_t enabled, float scaling_factor) {
    const vantu_orvanta_config_gravity_compensation value{enabled, scaling_factor};
    check_request(vantu_orvanta_config_gravity_compensation_set(current.connection.context(),
                                                                current.state.current_device_id, 0, &value));
}

void switch_gravity_compensation(session& current, std::uint8_t enabled) {
    set_gravity_compensation(current, enabled, current.state.gravity_compensation.load().scaling_factor);
}

void change_scaling_factor(session& current) {
    const std::optional<float> factor = prompt_number(current.terminal, scaling_prompt, 2);
    if (factor) {
        set_gravity_compensation(current, current.state.gravity_compensation.load().enabled, *factor);
    }
}

void switch_torque_scaling(session& current, std::uint8_t enabled) {
    const vantu_orvanta_config_torque_scaling value{enabled};
    check_request(vantu_orvanta_config_torque_scaling_set(current.connection.context(),
                                                          current.state.current_device_id, 0, &value));
}

void set_handedness(session& current, std::uint8_t handedness) {
    check_request(vantu_orvanta_config_handedness_set(current.connection.context(),
                                                      current.state.current_device_id, 0, &handedness));
}

void save_configuration(session& current) {
    check_request(
        vantu_orvanta_config_save_request(current.connection.context(), current.state.current_device_id, 0));
}

void apply(session& current, settings_choice choice) {
    switch (choice) {
    case settings_choice::disable_gravity_compensation:
        return switch_gravity_compensation(current, 0);
    case settings_choice::enable_gravity_compensation:
        return switch_gravity_compensation(current, 1);
    case settings_choice::change_gravity_compensation_scaling:
        return change_scaling_factor(current);
    case settings_choice::disable_torque_scaling:
        return switch_torque_scaling(current, 0);
    case settings_choice::enable_torque_scaling:
        return switch_torque_scaling(current, 1);
    case settings_choice::set_left_handed:
        return set_handedness(current, vantu_orvanta_handedness_left);
    case settings_choice::set_right_handed:
        return set_handedness(current, vantu_orvanta_handedness_right);
    case settings_choice::save_configuration:
        return save_configuration(current);
    case settings_choice::leave:
        break;
    }
}

} // namespace

void run_settings_menu(session& current) {
    while (current.state.device_connected) {
        current.terminal.print("\n");
        if (!current.state.device_connected) {
            current.terminal.print_error("Device disconnected\n");
        }
        print_menu(current.terminal, settings_menu_options, 1);
        const std::uint64_t choice = select_option(current.terminal, settings_menu_options.size(), 0);
        if (choice >= settings_menu_options.size()) {
            continue;
        }
        if (settings_choice{choice} == settings_choice::leave) {
            return;
        }
        apply(current, settings_choice{choice});
    }
}

} // namespace vantu::orvanta::app
