// Ctrl-C, as a flag that the waits of a command look at.
#pragma once

#include "ctl/report/exit_status.hpp"

#include <chrono>

namespace vantu::orvanta::ctl {

// From here on Ctrl-C, or a request to terminate, sets the flag in place of ending the process; a second one
// ends it. Writing to a closed pipe becomes an ordinary error.
void watch_for_interruption();

[[nodiscard]] bool is_interrupted() noexcept;

// How long a wait may last between two looks at the flag.
inline constexpr std::chrono::milliseconds look_for_interruption{20};

// Throws failure_with_status (interrupted) when the flag is set.
inline void end_when_interrupted() {
    if (is_interrupted()) {
        throw failure_with_status(exit_status::interrupted, "interrupted");
    }
}

} // namespace vantu::orvanta::ctl
