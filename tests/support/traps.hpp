// How a process ends at the breakpoint trap of a failed check when no debugger is there, and how it goes on after it; one
// source file a platform.
#pragma once

namespace orvanta_tests {

// For the exit status that GoogleTest hands to the predicate of a death test.
[[nodiscard]] bool ended_by_trap(int exit_status);
[[nodiscard]] bool ended_by_abort(int exit_status);

// From now on the process goes on after breakpoint traps.
void run_past_traps();

} // namespace orvanta_tests
