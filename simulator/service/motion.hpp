// The measurements of a simulated device at a time: smooth values that depend on the device, its
// configuration and the time alone, never the same for two devices.
// docs/simulator.md has the formulas.
#pragma once

#include "simulator/service/device.hpp"

#include <array>
#include <cstddef>

namespace vantu::orvanta::simulator {

// How far a cursor gets from its device's centre.
inline constexpr double reach_m = 0.1;

// The device's centre: this far along x for each earlier device of its type.
inline constexpr double device_spacing_m = 0.25;

// Position x, y, z and velocity x, y, z. Another handedness takes the cursor to the mirror image of its
// place at once.
[[nodiscard]] vantu_orvanta_cursor_state cursor_at(const device& which, std::int64_t now_ns);

// A unit quaternion.
[[nodiscard]] vantu_orvanta_orientation orientation_at(const device& which, std::int64_t now_ns);

// The currents of the motors 1 to 3.
[[nodiscard]] vantu_orvanta_status_motor_current motor_current_at(const device& which, std::int64_t now_ns);

// 1: the supply is on.
[[nodiscard]] vantu_orvanta_status_power_supply power_supply_of(const device& which) noexcept;

// A grip's state: bit 0 of the first byte is the button, the block its orientation as a unit
// quaternion, the tail the pressure on the pads of four fingers, 0 to 255.
struct grip_state {
    communication::proto::palmetron_head head;
    std::array<std::byte, 4> tail;
};
[[nodiscard]] grip_state grip_at(const device& which, std::int64_t now_ns);

} // namespace vantu::orvanta::simulator
