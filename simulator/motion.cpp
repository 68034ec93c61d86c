// The motion of simulated devices, as sums of sines.
#include "simulator/motion.hpp"

#include <cmath>
#include <cstring>
#include <numbers>

namespace vantu::orvanta::simulator {
namespace {

constexpr double device_spacing_m = 0.25;
constexpr double full_turn = 2 * std::numbers::pi;

double seconds_of(std::int64_t now_ns) {
    return static_cast<double>(now_ns) * 1e-9;
}

// A start of its own for each device of a type, never repeated: multiples of the golden angle.
double phase_of(const device& which) {
    constexpr double golden_angle = 2.399963229728653;
    return golden_angle * (which.place + 1);
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

} // namespace

vantu_orvanta_cursor_state cursor_at(const device& which, std::int64_t now_ns) {
    const double seconds = seconds_of(now_ns);
    const double phase = phase_of(which);
    const swing x = swing_at(0.06, 0.25, phase, seconds);
    const swing y = swing_at(0.05, 0.40, 1.3 * phase, seconds);
    const swing z = swing_at(0.04, 0.15, 1.7 * phase, seconds);
    const double centre = device_spacing_m * which.place;
    return {{static_cast<float>(centre + x.value), static_cast<float>(y.value), static_cast<float>(z.value),
             static_cast<float>(x.rate), static_cast<float>(y.rate), static_cast<float>(z.rate)}};
}

vantu_orvanta_orientation orientation_at(const device& which, std::int64_t now_ns) {
    const double phase = phase_of(which);
    const double half = (0.15 + swing_at(0.15, 0.1, phase, seconds_of(now_ns)).value) / 2;
    // An axis that leans away from the vertical by 0.5 rad, for each device to another side.
    const double lean = std::sin(0.5);
    return {static_cast<float>(std::cos(half)), static_cast<float>(std::sin(half) * lean * std::cos(phase)),
            static_cast<float>(std::sin(half) * lean * std::sin(phase)),
            static_cast<float>(std::sin(half) * std::cos(0.5))};
}

vantu_orvanta_status_motor_current motor_current_at(const device& which, std::int64_t now_ns) {
    const double seconds = seconds_of(now_ns);
    const double phase = phase_of(which);
    const double holding =
        which.settings.gravity_compensation ? 0.4 * static_cast<double>(which.settings.scaling_factor) : 0.0;
    return {{static_cast<float>(0.15 + swing_at(0.05, 0.05, phase, seconds).value),
             static_cast<float>(0.20 + holding + swing_at(0.05, 0.07, 1.3 * phase, seconds).value),
             static_cast<float>(0.15 + holding / 2 + swing_at(0.05, 0.03, 1.7 * phase, seconds).value)}};
}

vantu_orvanta_status_power_supply power_supply_of(const device&) noexcept {
    return {1};
}

grip_state grip_at(const device& which, std::int64_t now_ns) {
    const double seconds = seconds_of(now_ns);
    const double phase = phase_of(which);
    const vantu_orvanta_orientation orientation = orientation_at(which, now_ns);
    grip_state state{};
    state.head.first = swing_at(1.0, 0.2, phase, seconds).value > 0.9 ? 1 : 0;
    static_assert(sizeof orientation == sizeof state.head.block);
    std::memcpy(state.head.block, &orientation, sizeof orientation);
    state.head.tail_count = static_cast<std::uint8_t>(state.tail.size());
    double pad_phase = phase;
    for (std::byte& pad : state.tail) {
        pad = static_cast<std::byte>(128 + static_cast<int>(swing_at(120.0, 0.3, pad_phase, seconds).value));
        pad_phase += 0.4;
    }
    return state;
}

} // namespace vantu::orvanta::simulator
