// The record of a running polling thread, and its one step.
#pragma once

#include "context.hpp"
#include "core/poll_loop.hpp"
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

// Polls once and hands an event to the handler; without one runs the idle task. After a failed poll, whose
// code is the record's result, the loop is finished.
[[nodiscard]] poll_step run_poll_step(vantu_orvanta_poll_thread& thread);

} // namespace vantu::orvanta
