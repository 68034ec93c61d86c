// Clocks, sleeping, process id and debugger on Linux.
#include "vantu/orvanta/common/platform.hpp"

#include "vantu/orvanta/common/nanoseconds.hpp"

#include <cerrno>
#include <csignal>
#include <ctime>
#include <sys/prctl.h>
#include <unistd.h>

namespace vantu::orvanta::platform {
namespace {

std::int64_t read_clock(clockid_t clock) noexcept {
    timespec now{};
    clock_gettime(clock, &now);
    return static_cast<std::int64_t>(now.tv_sec) * ns_per_second + now.tv_nsec;
}

} // namespace

std::int64_t steady_now_ns() noexcept {
    return read_clock(CLOCK_MONOTONIC);
}

std::int64_t coarse_now_ns() noexcept {
    return read_clock(CLOCK_MONOTONIC_COARSE);
}

void sleep_until_ns(std::int64_t deadline_ns) noexcept {
    if (deadline_ns <= 0) {
        return;
    }
    timespec deadline{};
    deadline.tv_sec = static_cast<time_t>(deadline_ns / ns_per_second);
    deadline.tv_nsec = static_cast<long>(deadline_ns % ns_per_second);
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &deadline, nullptr) == EINTR) {
    }
}

void make_sleeps_precise() noexcept {
    // 0 would restore the default of 50 us; 1 ns is the least there is.
    prctl(PR_SET_TIMERSLACK, 1UL, 0UL, 0UL, 0UL);
}

std::uint32_t process_id() noexcept {
    return static_cast<std::uint32_t>(getpid());
}

void debug_break() noexcept {
    std::raise(SIGTRAP);
}

} // namespace vantu::orvanta::platform
