// The system's requests to end the program. One source file a platform implements it.
#pragma once

namespace vantu::orvanta::simulator {

// From now on an interrupt or a termination no longer ends the program but is remembered, and writing
// to a closed pipe is an ordinary error.
void watch_for_shutdown();

[[nodiscard]] bool shutdown_was_requested() noexcept;

} // namespace vantu::orvanta::simulator
