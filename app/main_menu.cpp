// The main menu and its actions.
#include "app/menus.hpp"

#include "app/discovery.hpp"
#include "app/reports.hpp"

#include "vantu/orvanta/orvanta.h"

namespace vantu::orvanta::app {
namespace {

constexpr const char* no_devices_text = "No devices found\n";
constexpr const char* no_device_connected_text = "No device connected - try using 'Find Orvanta3'\n";
constexpr std::uint64_t settle_ns = 10000;

void find_device(session& current) {
    application_state& state = current.state;
    if (state.device_connected) {
        check_result(vantu_orvanta_device_close(current.connection.context(), state.current_device_id, 0),
                     "client.device_close");
        vantu_orvanta_sleep(settle_ns);
    }
    const std::uint32_t id = find_orvanta3(current.terminal, current.connection);
    state.current_device_id = id;
    if (id == 0) {
        current.terminal.print_error("%s", no_devices_text);
        return;
    }
    ask_for_configuration(current.connection, id);
    vantu_orvanta_sleep(settle_ns);
    current.terminal.print("Device Info Updated\n");
    state.device_connected = true;
}

void show_device_info(session& current) {
    print_device_report(current.terminal,
                        device_report(current.connection, current.state.current_device_id).device);
}

void show_device_configuration(session& current) {
    const std::uint32_t id = current.state.current_device_id;
    if (id == 0) {
        current.terminal.print_error("%s", no_devices_text);
        return;
    }
    const device_lookup found = device_report(current.connection, id);
    if (found.code != 0) {
        current.terminal.print_error("%s", no_device_connected_text);
        return;
    }
    print_configuration_report(
        current.terminal, {current.state.orientation.load(), current.state.gravity_compensation.load(),
                           current.state.torque_scaling.load(), found.device.detail.orvanta3.handedness});
}

void act_with_device(session& current, main_choice choice) {
    switch (choice) {
    case main_choice::find_orvanta3:
        return find_device(current);
    case main_choice::get_device_info:
        return show_device_info(current);
    case main_choice::get_device_configuration:
        return show_device_configuration(current);
    case main_choice::device_settings:
        return run_settings_menu(current);
    case main_choice::exit:
        break;
    }
}

void act_without_device(session& current, main_choice choice) {
    if (choice == main_choice::find_orvanta3) {
        find_device(current);
    } else {
        current.terminal.print_error("%s", no_device_connected_text);
    }
}

} // namespace

void run_main_menu(session& current) {
    for (;;) {
        current.terminal.print("\n");
        print_menu(current.terminal, main_menu_options, 0);
        const main_choice choice{select_option(current.terminal, main_menu_options.size(), 0)};
        if (choice == main_choice::exit) {
            return;
        }
        if (current.state.device_connected) {
            act_with_device(current, choice);
        } else {
            act_without_device(current, choice);
        }
    }
}

void ask_for_configuration(const client& connection, std::uint32_t id) {
    for (const auto& query : {vantu_orvanta_orientation_get, vantu_orvanta_config_gravity_compensation_get,
                              vantu_orvanta_config_torque_scaling_get}) {
        check_request(query(connection.context(), id, 0));
    }
}

} // namespace vantu::orvanta::app
