// Times are counted in nanoseconds throughout, from the steady clock's start: their units and their sums.
#pragma once

#include <cstdint>
#include <limits>

namespace vantu::orvanta {

inline constexpr std::int64_t ns_per_millisecond = 1'000'000;
inline constexpr std::int64_t ns_per_second = 1'000'000'000;

// The end of time.
inline constexpr std::int64_t latest_ns = std::numeric_limits<std::int64_t>::max();

// The time that is so much later; the end of time where there is none.
[[nodiscard]] constexpr std::int64_t time_after(std::int64_t time_ns, std::uint64_t duration_ns) {
    // Without a sign no difference or sum of these is out of range.
    const auto start = static_cast<std::uint64_t>(time_ns);
    const std::uint64_t longest = static_cast<std::uint64_t>(latest_ns) - start;
    return duration_ns < longest ? static_cast<std::int64_t>(start + duration_ns) : latest_ns;
}

// The time from now, which is at least 0, to a deadline; 0 when that has passed.
[[nodiscard]] constexpr std::int64_t time_left_ns(std::int64_t now_ns, std::int64_t deadline_ns) {
    return deadline_ns > now_ns ? deadline_ns - now_ns : 0;
}

[[nodiscard]] constexpr double seconds_of(std::int64_t time_ns) {
    return static_cast<double>(time_ns) * 1e-9;
}

} // namespace vantu::orvanta
