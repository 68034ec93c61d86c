// The polling thread: the loop around the poll, and the record of a running one.
#pragma once

#include "runtime/context.hpp"
#include "runtime/native_thread.hpp"
#include "vantu/orvanta/orvanta.h"

#include <atomic>
#include <cstdint>

struct vantu_orvanta_poll_thread {
    vantu_orvanta_context* context;
    vantu_orvanta_event_handler handler;
    void* user;
    vantu::orvanta::native_thread thread{};
    std::atomic<std::uint8_t> stop{0};
    std::atomic<std::uint32_t> result{0}; // the code that ended the loop
};

namespace vantu::orvanta {

enum class poll_step : std::uint8_t {
    idle,    // nothing happened
    handled, // an event went to the handler
    failed,  // the poll's code is the record's result
};

// Polls once and hands an event to the handler.
[[nodiscard]] poll_step run_poll_step(vantu_orvanta_poll_thread& thread);

// Steps until the stop flag is set or a poll fails: at every tick while idle, at once after an event.
void run_poll_loop(vantu_orvanta_poll_thread& thread);

} // namespace vantu::orvanta
