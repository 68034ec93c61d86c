// One sample as watch shows it, with what the service told beside the cursor since the sample before.
#pragma once

#include "vantu/orvanta/device.hpp"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace vantu::orvanta::ctl {

inline constexpr std::size_t axes = 3;
inline constexpr std::size_t motors = 3;
inline constexpr std::array<std::string_view, axes> axis_names{"x", "y", "z"};
inline constexpr std::array<std::string_view, motors> motor_names{"1", "2", "3"};

// Values that come more seldom than samples. Each is there only where it is news.
struct side_values {
    std::optional<std::array<float, motors>> motor_current;
    std::optional<std::uint8_t> power_supply;
    std::optional<vantu::orvanta::orientation> orientation;
};

struct observation {
    double seconds{0};       // since the first sample
    std::uint64_t number{0}; // of the sample, from 1
    std::uint8_t stream{0};
    std::array<float, axes> position{}; // the first three values of the cursor's state
    std::array<float, axes> velocity{}; // the other three
    side_values news;
};

// Its values in the order of their names.
inline std::array<float, 4> values_of(const orientation& one) {
    return {one.r, one.x, one.y, one.z};
}

} // namespace vantu::orvanta::ctl
