#include "simulator/service/motion.hpp"

#include "vantu/orvanta/common/nanoseconds.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>

namespace vantu::orvanta::simulator {
namespace {

constexpr double full_turn = 2 * std::numbers::pi;

// A start of its own for each device of a type, never repeated: multiples of the golden angle.
double phase_of(const device& which) {
    constexpr double golden_angle = 2.399963229728653;
    return golden_angle * (which.place + 1);
}

bool is_left_handed(const device& which) {
    return which.settings.handedness == vantu_orvanta_handedness_left;
}

struct swing {
    double value;
    double rate; // its change a second
};

swing swing_at(double amplitude, double hertz, double phase, double seconds) {
    const double pulse = full_turn * hertz;
    const double angle = std::fmod(pulse * seconds, full_turn) + phase;
    return {amplitude * std::sin(angle), amplitude * pulse * std::cos(angle)};
}

// The cursor's way from the device's centre, along x, y, z.
std::array<swing, 3> path_at(const device& which, std::int64_t now_ns) {
    constexpr std::array amplitudes{0.06, 0.05, 0.04};
    static_assert(amplitudes[0] * amplitudes[0] + amplitudes[1] * amplitudes[1] +
                      amplitudes[2] * amplitudes[2] <
                  reach_m * reach_m);
    const double seconds = seconds_of(now_ns);
    const double phase = phase_of(which);
    swing x = swing_at(amplitudes[0], 0.25, phase, seconds);
    if (is_left_handed(which)) {
        x = {-x.value, -x.rate};
    }
    return {x, swing_at(amplitudes[1], 0.40, 1.3 * phase, seconds),
            swing_at(amplitudes[2], 0.15, 1.7 * phase, seconds)};
}

// In newton metres, for each motor; what the arm weighs at its present lever, and the share held of it.
std::array<double, 3> gravity_torques(const std::array<swing, 3>& path, const configuration& settings) {
    constexpr double standard_gravity = 9.81;
    constexpr std::array masses_kg{0.0, 0.15, 0.05};
    constexpr double shoulder_m = 0.15;
    const double lever = std::hypot(path[0].value, path[1].value + shoulder_m);
    const double share = settings.gravity_compensation ? static_cast<double>(settings.scaling_factor) : 0.0;
    std::array<double, 3> torques{};
    std::transform(masses_kg.begin(), masses_kg.end(), torques.begin(),
                   [=](double mass) { return mass * standard_gravity * lever * share; });
    return torques;
}

// Dry friction, smooth around rest, and that of the grease.
double friction_torque(double velocity) {
    constexpr double dry = 0.02;
    constexpr double slow = 0.01;
    constexpr double grease = 0.1;
    return dry * std::tanh(velocity / slow) + grease * velocity;
}

} // namespace

vantu_orvanta_cursor_state cursor_at(const device& which, std::int64_t now_ns) {
    const auto [x, y, z] = path_at(which, now_ns);
    const double centre = device_spacing_m * which.place;
    return {{static_cast<float>(centre + x.value), static_cast<float>(y.value), static_cast<float>(z.value),
             static_cast<float>(x.rate), static_cast<float>(y.rate), static_cast<float>(z.rate)}};
}

vantu_orvanta_orientation orientation_at(const device& which, std::int64_t now_ns) {
    constexpr double lean_rad = 0.5;
    const double phase = phase_of(which);
    const double half = (0.2 + swing_at(0.1, 0.1, phase, seconds_of(now_ns)).value) / 2;
    const double lean = std::sin(half) * std::sin(lean_rad);
    const double mirror = is_left_handed(which) ? -1 : 1;
    return {static_cast<float>(std::cos(half)), static_cast<float>(lean * std::cos(phase)),
            static_cast<float>(mirror * lean * std::sin(phase)),
            static_cast<float>(mirror * std::sin(half) * std::cos(lean_rad))};
}

vantu_orvanta_status_motor_current motor_current_at(const device& which, std::int64_t now_ns) {
    constexpr double torque_per_ampere = 0.5;
    constexpr double scaled = 0.6;
    const auto path = path_at(which, now_ns);
    const auto gravity = gravity_torques(path, which.settings);
    const double scale = which.settings.torque_scaling ? scaled : 1.0;
    vantu_orvanta_status_motor_current told{};
    for (std::size_t i = 0; i < path.size(); ++i) {
        const double torque = gravity[i] + friction_torque(path[i].rate);
        told.values[i] = static_cast<float>(scale * torque / torque_per_ampere);
    }
    return told;
}

vantu_orvanta_status_power_supply power_supply_of(const device&) noexcept {
    return {1};
}

grip_state grip_at(const device& which, std::int64_t now_ns) {
    constexpr double pressed_above = 0.9;
    constexpr double finger_lag_rad = 0.2;
    constexpr double full_pressure = 255;
    const double seconds = seconds_of(now_ns);
    const auto closure_of = [&](double lag) {
        return (1 + swing_at(1, 0.2, phase_of(which) - lag, seconds).value) / 2;
    };
    const vantu_orvanta_orientation orientation = orientation_at(which, now_ns);
    grip_state state{};
    state.head.first = closure_of(0) > pressed_above ? 1 : 0;
    static_assert(sizeof orientation == sizeof state.head.block);
    std::memcpy(state.head.block, &orientation, sizeof orientation);
    state.head.tail_count = static_cast<std::uint8_t>(state.tail.size());
    double lag = 0;
    for (std::byte& pad : state.tail) {
        pad = static_cast<std::byte>(std::lround(full_pressure * closure_of(lag)));
        lag += finger_lag_rad;
    }
    return state;
}

} // namespace vantu::orvanta::simulator
