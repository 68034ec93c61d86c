// What a simulated device measures at a time: smooth values that depend on the device and the time
// alone, never the same for two devices.
#pragma once

#include "simulator/device.hpp"

#include <array>
#include <cstddef>

namespace vantu::orvanta::simulator {

// Position x, y, z in metres and velocity x, y, z in metres a second. The devices stand side by side,
// 0.25 m apart along x; each cursor stays within 0.1 m of its device.
[[nodiscard]] vantu_orvanta_cursor_state cursor_at(const device& which, std::int64_t now_ns);

// A unit quaternion: the device sways by up to 0.3 rad about an axis of its own.
[[nodiscard]] vantu_orvanta_orientation orientation_at(const device& which, std::int64_t now_ns);

// In ampere. Compensating gravity takes current in proportion to the factor.
[[nodiscard]] vantu_orvanta_status_motor_current motor_current_at(const device& which, std::int64_t now_ns);

// 1: the supply is on.
[[nodiscard]] vantu_orvanta_status_power_supply power_supply_of(const device& which) noexcept;

// A grip's state: bit 0 of the first byte is the button, the block its orientation as a unit
// quaternion, the tail the pressure on four pads, 0 to 255.
struct grip_state {
    communication::proto::palmetron_head head;
    std::array<std::byte, 4> tail;
};
[[nodiscard]] grip_state grip_at(const device& which, std::int64_t now_ns);

} // namespace vantu::orvanta::simulator
