// The two loops around the poll: the polling thread's, and the wait for a confirmed goodbye. They own
// no clock and no thread: a System gives them the time, sleeps and polls.
//
//     std::int64_t now_ns();                     the steady clock
//     void sleep_until_ns(std::int64_t time);    returns at that time at the earliest
//     poll_step poll();                          one poll, and its event handed on
#pragma once

#include "core/timing.hpp"

#include <cstdint>

namespace vantu::orvanta {

enum class poll_step : std::uint8_t {
    idle,     // nothing happened
    handled,  // an event was handed on
    finished, // there is no reason to poll again
};

// Polls until a poll finishes or is_stopped() is true before one: at every tick while idle, at once
// after an event.
template <typename System> void run_poll_loop(System& system) {
    std::int64_t tick_ns = first_tick_ns(system.now_ns());
    while (!system.is_stopped()) {
        switch (system.poll()) {
        case poll_step::idle:
            system.sleep_until_ns(tick_ns);
            tick_ns = next_tick_ns(tick_ns, system.now_ns());
            break;
        case poll_step::handled:
            break;
        case poll_step::finished:
            return;
        }
    }
}

// Polls until a poll finishes or the service has had its time to confirm a goodbye that was sent just
// now: a tick after an idle poll, at once after an event.
template <typename System> void await_goodbye(System& system) {
    const std::int64_t deadline_ns = goodbye_deadline_ns(system.now_ns());
    while (system.now_ns() < deadline_ns) {
        switch (system.poll()) {
        case poll_step::idle:
            system.sleep_until_ns(first_tick_ns(system.now_ns()));
            break;
        case poll_step::handled:
            break;
        case poll_step::finished:
            return;
        }
    }
}

} // namespace vantu::orvanta
