// One sample as watch shows it, with what the service told beside the cursor since the sample before.
#pragma once

#include "vantu/orvanta/device.hpp"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace vantu::orvanta::ctl {

inline constexpr std::size_t axes = 3;
inline constexpr std::size_t motors = 3;

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

} // namespace vantu::orvanta::ctl
