// Times are counted in nanoseconds throughout; these are the units that they are made of.
#pragma once

#include <cstdint>

namespace vantu::orvanta {

inline constexpr std::int64_t ns_per_millisecond = 1'000'000;
inline constexpr std::int64_t ns_per_second = 1'000'000'000;

[[nodiscard]] constexpr double seconds_of(std::int64_t time_ns) {
    return static_cast<double>(time_ns) * 1e-9;
}

} // namespace vantu::orvanta
