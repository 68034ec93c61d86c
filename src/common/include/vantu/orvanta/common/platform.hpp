// The library's needs of the operating system besides sockets and threads: clocks, precise
// sleeping, the process id and the debugger. One source file a platform implements it.
#pragma once

#include <cstdint>

namespace vantu::orvanta::platform {

// The steady clock, in nanoseconds from an arbitrary start. About 20 ns a call.
[[nodiscard]] std::int64_t steady_now_ns() noexcept;

// The steady clock as of the last timer interrupt, at a quarter of the cost: never later than
// steady_now_ns, and earlier by less than coarse_clock_lag_ns.
[[nodiscard]] std::int64_t coarse_now_ns() noexcept;
inline constexpr std::int64_t coarse_clock_lag_ns = 50'000'000;

// Sleeps the calling thread until the steady clock reaches the deadline; returns at once when it has.
void sleep_until_ns(std::int64_t deadline_ns) noexcept;

// Asks that the calling thread's sleeps end on time instead of being grouped with other timers.
void make_sleeps_precise() noexcept;

[[nodiscard]] std::uint32_t process_id() noexcept;

// Stops in an attached debugger; without one, what the platform does on a breakpoint trap.
void debug_break() noexcept;

} // namespace vantu::orvanta::platform
