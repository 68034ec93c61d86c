// The table of keys: what a device has to show, and what of it can be set. Commands, completions, manual page
// and tests go by it.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace vantu::orvanta::ctl {

// In the order in which all of them are shown.
enum class key : std::uint8_t {
    orientation,
    gravity_compensation,
    scaling_factor,
    torque_scaling,
    handedness,
    motor_current,
    power_supply,
};

// How the values of a key are written.
enum class value_kind : std::uint8_t {
    quaternion, // r x y z
    on_off,
    fraction, // a number from 0 to 1
    hand,
    currents, // of three motors
    state,    // a number from 0 to 255
};

struct key_row {
    key id;
    std::string_view name; // as typed: "scaling-factor"
    value_kind kind;
    bool can_be_set;
    std::string_view meaning; // one line
};

[[nodiscard]] std::span<const key_row> keys() noexcept;
[[nodiscard]] const key_row& row_of(key id) noexcept;
// Null when there is none.
[[nodiscard]] const key_row* find_key(std::string_view name) noexcept;

// The words that a value of this kind may be, on and left first; none where it is a number.
[[nodiscard]] std::span<const std::string_view> words_of(value_kind kind) noexcept;
// The values of this kind, as errors and the manual say it: "on or off".
[[nodiscard]] std::string_view description_of(value_kind kind) noexcept;

} // namespace vantu::orvanta::ctl
