// The measurements of a simulated device at a time: smooth values that depend on the device, its
// configuration and the time alone, never the same for two devices.
//
// Lengths are in metres, times in seconds, currents in ampere; x points right, y forward, z up. The k-th
// device of a type, from 0, has the phase p = 2.39996 (k + 1), the golden angle, and its centre at
// (0.25 k, 0, 0). S(f, q) stands for sin(2 pi f t + q).
//
// path         x = 0.06 S(0.25, p), y = 0.05 S(0.40, 1.3 p), z = 0.04 S(0.15, 1.7 p) from the centre, so
//              never farther from it than the reach of 0.1 m; left-handed: -x for x
// velocity     the derivative of the path
// orientation  by 0.2 + 0.1 S(0.1, p) rad about the axis (sin 0.5 cos p, sin 0.5 sin p, cos 0.5);
//              left-handed: the mirror image, -y and -z for y and z of the quaternion
// gravity      the arm hangs from a shoulder 0.15 m behind the centre, with the lever
//              r = sqrt(x^2 + (y + 0.15)^2); motor 2 holds 0.15 kg g r F, motor 3 0.05 kg g r F and motor 1
//              nothing, F being the factor of gravity compensation, 0 while that is off
// friction     motor i moves axis i against 0.02 tanh(v / 0.01) + 0.1 v N m
// currents     s (gravity + friction) / 0.5 N m/A, s being 0.6 with torque scaling and 1 without
// grip         closes to c = (1 + S(0.2, p)) / 2; each further finger follows by 0.2 rad; the button is
//              pressed while c is above 0.9
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
