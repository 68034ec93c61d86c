// The configuration of a device as requests: reading, setting and saving it.
#pragma once

#include "ctl/service/connection.hpp"
#include "ctl/settings/values.hpp"

#include <chrono>
#include <cstdint>
#include <span>
#include <string>

namespace vantu::orvanta::ctl {

// The values that one request sets: gravity compensation and scaling factor go together.
enum class part : std::uint8_t { gravity, torque, hand };

[[nodiscard]] std::span<const key> keys_of(part which) noexcept;
[[nodiscard]] part part_of(key which);

// All functions throw failure_with_status.

// The orientation.
[[nodiscard]] value ask_orientation(connection& to, std::uint32_t device_id);

// The values of a part; the handedness, for which there is no request, as the device is listed.
[[nodiscard]] value_set ask_part(connection& to, std::uint32_t device_id, part which);

// Sets a part, all of whose values are given, and returns the values that the service has confirmed.
[[nodiscard]] value_set set_part(connection& to, std::uint32_t device_id, part which, const value_set& wanted,
                                 std::chrono::nanoseconds time);

// Saves, waits for the answer, and fails when it is not that the device has saved.
void save(connection& to, std::uint32_t device_id);

} // namespace vantu::orvanta::ctl
