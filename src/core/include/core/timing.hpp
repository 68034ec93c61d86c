// The times of a connection, as functions of times that are passed in: nanoseconds of the steady clock.
#pragma once

#include <cstdint>

namespace vantu::orvanta {

// A client that has sent nothing for so long tells the service that it is alive.
inline constexpr std::int64_t keep_alive_interval_ns = 1'000'000'000;

// How often an idle connection is polled.
inline constexpr std::int64_t poll_tick_ns = 100'000;

// How long the service has to confirm a goodbye.
inline constexpr std::int64_t goodbye_timeout_ns = 100'000'000;

// When the next keep-alive is due after a send.
[[nodiscard]] constexpr std::int64_t keep_alive_due_ns(std::int64_t last_send_ns) {
    return last_send_ns + keep_alive_interval_ns;
}

// Until when to sleep after an idle poll at the given time, with no tick before it.
[[nodiscard]] constexpr std::int64_t first_tick_ns(std::int64_t now_ns) {
    return now_ns + poll_tick_ns;
}

// The first tick after a given one that is not earlier than now: ticks that were missed are skipped.
[[nodiscard]] constexpr std::int64_t next_tick_ns(std::int64_t tick_ns, std::int64_t now_ns) {
    if (tick_ns >= now_ns) {
        return tick_ns;
    }
    return tick_ns + (now_ns - tick_ns + poll_tick_ns - 1) / poll_tick_ns * poll_tick_ns;
}

// Until when a goodbye that was sent now is waited for.
[[nodiscard]] constexpr std::int64_t goodbye_deadline_ns(std::int64_t now_ns) {
    return now_ns + goodbye_timeout_ns;
}

} // namespace vantu::orvanta
