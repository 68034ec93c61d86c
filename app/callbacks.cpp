#include "app/callbacks.hpp"

#include "vantu/orvanta/orvanta.h"

#include <mutex>

namespace vantu::orvanta::app {
namespace {

void capture_events(client::config& callbacks, application_state& state) {
    std::mutex& app_mutex = state.app_mutex;
    callbacks.on_cursor_state = event_fn(&state.cursor_state, app_mutex);
    callbacks.on_palmetron_state = event_fn(&state.palmetron_state, app_mutex);
    callbacks.on_orientation = event_fn(&state.orientation, app_mutex);
    callbacks.on_config_save = event_fn(&state.config_save, app_mutex);
    callbacks.on_config_gravity_compensation = event_fn(&state.gravity_compensation, app_mutex);
    callbacks.on_config_torque_scaling = event_fn(&state.torque_scaling, app_mutex);
    callbacks.on_status_motor_current = event_fn(&state.motor_current, app_mutex);
    callbacks.on_status_power_supply = event_fn(&state.power_supply, app_mutex);
}

} // namespace

client::config make_callbacks(application_state& state, console& terminal) {
    client::config callbacks;
    capture_events(callbacks, state);
    callbacks.on_device = [&state](client& connection, unsigned id, const vantu_orvanta_device&) {
        const std::lock_guard lock(state.app_mutex);
        if (id == state.current_device_id && !state.device_connected) {
            state.device_connected = true;
            check_result(vantu_orvanta_device_open(connection.context(), id, 0, 0), "client.device_open");
        }
    };
    callbacks.on_device_removed = [&state](client&, unsigned id) {
        const std::lock_guard lock(state.app_mutex);
        if (id == state.current_device_id) {
            state.device_connected = false;
        }
    };
    callbacks.on_device_opened = [](client&, unsigned) {};
    callbacks.on_device_closed = [](client&, unsigned) {};
    callbacks.on_disconnected = [](client&) {};
    callbacks.on_error = [&terminal](client&, unsigned, const vantu_orvanta_error& error) {
        terminal.print_error("\nError from on_error: %s\n",
                             error_message(static_cast<std::int32_t>(error.status)));
    };
    return callbacks;
}

} // namespace vantu::orvanta::app
