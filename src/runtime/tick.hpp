// The rhythm of an idle connection.
#pragma once

#include <cstdint>

namespace vantu::orvanta {

// How often an idle connection is polled.
inline constexpr std::int64_t tick_ns = 100'000;

// The first tick after a given one that is not earlier than now: ticks that were missed are skipped.
[[nodiscard]] constexpr std::int64_t next_tick_ns(std::int64_t tick, std::int64_t now_ns) {
    if (tick >= now_ns) {
        return tick;
    }
    return tick + (now_ns - tick + tick_ns - 1) / tick_ns * tick_ns;
}

static_assert(next_tick_ns(500, 500) == 500);
static_assert(next_tick_ns(500, 501) == 500 + tick_ns);
static_assert(next_tick_ns(500, 500 + tick_ns) == 500 + tick_ns);
static_assert(next_tick_ns(500, 501 + 3 * tick_ns) == 500 + 4 * tick_ns);

} // namespace vantu::orvanta
