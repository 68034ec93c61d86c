// The most precise timer that Windows grants: a high-resolution one, which is not bound to the system's
// tick, else an ordinary one.
#include "vantu/orvanta/common/waitable_timer_windows.hpp"

#include "vantu/orvanta/common/nanoseconds.hpp"
#include "vantu/orvanta/common/per_thread_windows.hpp"
#include "vantu/orvanta/common/platform.hpp"

#include <algorithm>
#include <windows.h>

#ifndef CREATE_WAITABLE_TIMER_HIGH_RESOLUTION
#define CREATE_WAITABLE_TIMER_HIGH_RESOLUTION 0x00000002
#endif

namespace vantu::orvanta::platform {
namespace {

std::int64_t time_left_until(std::int64_t deadline_ns) noexcept {
    return time_left_ns(steady_now_ns(), deadline_ns);
}

} // namespace

waitable_timer::waitable_timer() noexcept
    : handle_(CreateWaitableTimerExW(nullptr, nullptr, CREATE_WAITABLE_TIMER_HIGH_RESOLUTION,
                                     TIMER_MODIFY_STATE | SYNCHRONIZE)),
      precise_(handle_ != nullptr) {
    if (handle_ == nullptr) {
        handle_ = CreateWaitableTimerExW(nullptr, nullptr, 0, TIMER_MODIFY_STATE | SYNCHRONIZE);
    }
}

waitable_timer::~waitable_timer() {
    if (handle_ != nullptr) {
        CloseHandle(handle_);
    }
}

bool waitable_timer::set(std::int64_t deadline_ns) const noexcept {
    constexpr std::int64_t ns_per_unit = 100;
    if (handle_ == nullptr) {
        return false;
    }
    // Rounded up, so that the timer never ends just before the deadline; negative is relative.
    const std::int64_t left_ns = time_left_until(deadline_ns);
    LARGE_INTEGER due;
    due.QuadPart = -(left_ns / ns_per_unit + (left_ns % ns_per_unit == 0 ? 0 : 1));
    return SetWaitableTimer(handle_, &due, 0, nullptr, nullptr, FALSE) != 0;
}

const waitable_timer& timer_of_this_thread() noexcept {
    static const waitable_timer none(nullptr);
    const waitable_timer* own = of_this_thread<waitable_timer>();
    return own != nullptr ? *own : none;
}

std::uint32_t milliseconds_until(std::int64_t deadline_ns) noexcept {
    const std::int64_t left_ns = time_left_until(deadline_ns);
    const std::int64_t left_ms = left_ns / ns_per_millisecond + (left_ns % ns_per_millisecond == 0 ? 0 : 1);
    return static_cast<std::uint32_t>(std::min<std::int64_t>(left_ms, INFINITE - 1));
}

} // namespace vantu::orvanta::platform
