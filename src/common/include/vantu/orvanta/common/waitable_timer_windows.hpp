// The most precise timer that Windows grants a thread, one a thread.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vantu::orvanta::platform {

class waitable_timer {
  public:
    waitable_timer() noexcept;
    // No timer: it cannot be set.
    explicit waitable_timer(std::nullptr_t) noexcept : handle_(nullptr), precise_(false) {}
    ~waitable_timer();
    waitable_timer(const waitable_timer&) = delete;
    waitable_timer& operator=(const waitable_timer&) = delete;

    // Sets the timer to the steady clock's deadline: its handle is signalled then, never much earlier.
    // A deadline that has passed signals it at once. False when there is no timer.
    [[nodiscard]] bool set(std::int64_t deadline_ns) const noexcept;

    // To be waited for; null when the system has no timer left.
    [[nodiscard]] void* handle() const noexcept { return handle_; }

    // False on systems whose timers follow the system's tick.
    [[nodiscard]] bool is_precise() const noexcept { return precise_; }

  private:
    void* handle_;
    bool precise_;
};

// The calling thread's own timer, made when it is first asked for. One that cannot be set when there is no
// memory for it.
[[nodiscard]] const waitable_timer& timer_of_this_thread() noexcept;

// The least wait without a timer that lasts until the deadline, in milliseconds of the system.
[[nodiscard]] std::uint32_t milliseconds_until(std::int64_t deadline_ns) noexcept;

} // namespace vantu::orvanta::platform
