// Clocks, sleeping, process id and debugger on Windows.
#include "vantu/orvanta/common/platform.hpp"

#include "vantu/orvanta/common/nanoseconds.hpp"
#include "vantu/orvanta/common/waitable_timer_windows.hpp"

#include <process.h>
#include <windows.h>

#include <timeapi.h>

namespace vantu::orvanta::platform {
namespace {

std::int64_t counter_frequency() noexcept {
    LARGE_INTEGER frequency;
    QueryPerformanceFrequency(&frequency);
    return frequency.QuadPart;
}

} // namespace

std::int64_t steady_now_ns() noexcept {
    static const std::int64_t frequency = counter_frequency();
    LARGE_INTEGER count;
    QueryPerformanceCounter(&count);
    // In two parts: the count in nanoseconds times the frequency would not fit.
    const std::int64_t seconds = count.QuadPart / frequency;
    const std::int64_t rest = count.QuadPart % frequency;
    return seconds * ns_per_second + rest * ns_per_second / frequency;
}

// The system's cheaper clocks count from another start; the counter itself costs little.
std::int64_t coarse_now_ns() noexcept {
    return steady_now_ns();
}

void sleep_until_ns(std::int64_t deadline_ns) noexcept {
    while (steady_now_ns() < deadline_ns) {
        const waitable_timer& timer = timer_of_this_thread();
        if (!timer.set(deadline_ns) || WaitForSingleObject(timer.handle(), INFINITE) != WAIT_OBJECT_0) {
            Sleep(milliseconds_until(deadline_ns));
        }
    }
}

void make_sleeps_precise() noexcept {
    if (!timer_of_this_thread().is_precise()) {
        // For as long as the process lives: timers then follow a tick of a millisecond.
        timeBeginPeriod(1);
    }
}

std::uint32_t process_id() noexcept {
    return static_cast<std::uint32_t>(_getpid());
}

void debug_break() noexcept {
    DebugBreak();
}

} // namespace vantu::orvanta::platform
