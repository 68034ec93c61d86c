// The knowledge of the tool: the chosen device and the latest event of each kind.
#pragma once

#include "app/event_slot.hpp"

#include "vantu/orvanta/communication/records.h"

#include <atomic>
#include <cstdint>
#include <mutex>

namespace vantu::orvanta::app {

// Callbacks write while they hold app_mutex. The menus read without it, and "Find Orvanta3" writes
// current_device_id and device_connected without it.
struct application_state {
    std::mutex app_mutex;
    std::atomic<std::uint32_t> current_device_id{0}; // 0: no device
    std::atomic<bool> device_connected{false};       // the chosen device is open

    event_slot<vantu_orvanta_cursor_state> cursor_state;
    event_slot<vantu_orvanta_palmetron_state> palmetron_state;
    event_slot<vantu_orvanta_orientation> orientation;
    event_slot<vantu_orvanta_config_save> config_save;
    event_slot<vantu_orvanta_config_gravity_compensation> gravity_compensation;
    event_slot<vantu_orvanta_config_torque_scaling> torque_scaling;
    event_slot<vantu_orvanta_status_motor_current> motor_current;
    event_slot<vantu_orvanta_status_power_supply> power_supply;
};

} // namespace vantu::orvanta::app
