/// @file
/// Devices and their values as a session shows them: aligned, typed, in units of the language. C++17.
#pragma once

#include "vantu/orvanta/communication/records.h"
#include "vantu/orvanta/export.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <string>

namespace vantu::orvanta {

/// Kinds of devices.
enum class device_type : std::uint8_t {
    none = vantu_orvanta_device_type_none,           ///< not known
    orvanta3 = vantu_orvanta_device_type_orvanta3,   ///< an Orvanta3
    palmetron = vantu_orvanta_device_type_palmetron, ///< a Palmetron
};

/// For which hand a device is set up.
enum class handedness : std::uint8_t {
    none = vantu_orvanta_handedness_none,   ///< not known
    right = vantu_orvanta_handedness_right, ///< the right hand
    left = vantu_orvanta_handedness_left,   ///< the left hand
};

/// "none", "orvanta3" or "palmetron"; "unknown" for another value. Never null, never freed.
[[nodiscard]] VANTU_ORVANTA_API const char* name_of(device_type type) noexcept;
/// "none", "right" or "left"; "unknown" for another value. Never null, never freed.
[[nodiscard]] VANTU_ORVANTA_API const char* name_of(handedness hand) noexcept;

/// A device as the service described it.
struct device {
    std::uint32_t id{0};                 ///< by which requests name it, while it stays plugged in
    device_type type{device_type::none}; ///< its kind
    std::uint16_t short_id{0};           ///< as printed in menus, in hexadecimal
    std::string uuid;                    ///< 8-4-4-4-12 lower-case hexadecimal digits; stays the same
    orvanta::handedness handedness{};    ///< of an Orvanta3; none for others and before its details came
    std::array<std::uint8_t, 8> information{}; ///< of its details; the meaning is not specified
};

/// One state of a device's cursor.
struct cursor_sample {
    std::uint32_t device_id{0}; ///< the device
    std::uint8_t stream{0};     ///< 1 or 2: from which of the service's two streams
    std::uint64_t number{0};    ///< counts this device's samples from 1, anew when it arrives again
    std::chrono::steady_clock::time_point received{}; ///< when it was taken off the socket
    std::array<float, 6> values{};                    ///< in wire order; the units are not specified
};

/// An orientation as a quaternion.
struct orientation {
    float r{0}; ///< the real part
    float x{0}; ///< of the imaginary part
    float y{0}; ///< of the imaginary part
    float z{0}; ///< of the imaginary part
};

/// The gravity compensation of a device.
struct gravity_compensation {
    bool enabled{false};     ///< whether it is on
    float scaling_factor{0}; ///< no unit; the service checks its range
};

/// The torque scaling of a device.
struct torque_scaling {
    bool enabled{false}; ///< whether it is on
};

/// The service's answer to a request to save.
struct saved_configuration {
    std::uint8_t saved{0}; ///< as the service sent it; 1 from services that did save
};

/// The currents of a device's three motors.
struct motor_current {
    std::uint32_t device_id{0};    ///< the device
    std::array<float, 3> values{}; ///< in wire order; the unit is not specified
};

/// The state of a device's power supply.
struct power_supply {
    std::uint32_t device_id{0}; ///< the device
    std::uint8_t state{0};      ///< as the service sent it; the meaning is not specified
};

} // namespace vantu::orvanta
