// The library's needs of the operating system besides sockets and threads: clocks, precise sleeping, the
// process id, the debugger and the rules of file names. Source files of each platform implement it.
#pragma once

#include <cstdint>
#include <string>

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

// The file name at the end of a source path, by the rules of the platform's paths: the part after the last
// "/" or "\"; all of a path that has neither. Throws std::system_error for a path longer than the largest
// 32-bit signed number, and where the platform cannot convert the path.
[[nodiscard]] std::string file_name_of(const std::string& path);

// Stops in an attached debugger; without one, what the platform does on a breakpoint trap.
void debug_break() noexcept;

} // namespace vantu::orvanta::platform
