// The wait on Windows: one event that the socket sets when something comes, and that wakes set as well. It
// resets itself with the wait that it ends; the next receive sets it again if more is waiting.
#include "network/socket_waiter.hpp"

#include "socket_shared.hpp"
#include "vantu/orvanta/common/log.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"
#include "vantu/orvanta/common/platform.hpp"
#include "vantu/orvanta/common/waitable_timer_windows.hpp"

#include <array>
#include <new>
#include <winsock2.h>

namespace vantu::orvanta {
namespace {

class event_waiter final : public socket_waiter {
  public:
    event_waiter() = default;
    ~event_waiter() override {
        if (event_ != nullptr) {
            CloseHandle(event_);
        }
    }
    event_waiter(const event_waiter&) = delete;
    event_waiter& operator=(const event_waiter&) = delete;

    [[nodiscard]] bool is_made() const { return event_ != nullptr; }

    [[nodiscard]] std::uint32_t watch(socket_handle socket) override {
        return WSAEventSelect(socket, event_, FD_READ) == 0 ? 0
                                                            : static_cast<std::uint32_t>(WSAGetLastError());
    }

    void forget(socket_handle socket) override { WSAEventSelect(socket, nullptr, 0); }

    void wake() override { SetEvent(event_); }

    // The event stays as it is: with a wake, a reset could lose a datagram's signal.
    void clear_wakes() override {}

    [[nodiscard]] result wait_until(std::int64_t deadline_ns) override {
        const platform::waitable_timer& timer = platform::timer_of_this_thread();
        // Timers may end a little before the clock.
        for (;;) {
            const bool timed = deadline_ns != latest_ns && timer.set(deadline_ns);
            const std::array<HANDLE, 2> handles{event_, timer.handle()};
            const DWORD limit =
                timed || deadline_ns == latest_ns ? INFINITE : platform::milliseconds_until(deadline_ns);
            // The first of two handles that are both set counts.
            const DWORD ready = WaitForMultipleObjects(timed ? 2 : 1, handles.data(), FALSE, limit);
            if (ready == WAIT_FAILED) {
                return {status::failed, GetLastError()};
            }
            if (ready == WAIT_OBJECT_0) {
                return {status::ready};
            }
            if (platform::steady_now_ns() >= deadline_ns) {
                return {status::timed_out};
            }
        }
    }

    [[nodiscard]] std::intptr_t handle() const override { return reinterpret_cast<std::intptr_t>(event_); }

  private:
    HANDLE event_{CreateEventExA(nullptr, nullptr, 0, EVENT_ALL_ACCESS)};
};

} // namespace

std::unique_ptr<socket_waiter> socket_waiter::create(std::uint32_t& system_error) {
    std::unique_ptr<event_waiter> made(new (std::nothrow) event_waiter);
    if (made != nullptr && made->is_made()) {
        return made;
    }
    system_error = made == nullptr ? ERROR_NOT_ENOUGH_MEMORY : GetLastError();
    return nullptr;
}

void log_wait_failure(std::uint32_t system_error) {
    using namespace socket_shared;
    log_here(log_level::warning, failure_text(unable_to_wait, error_text(system_error)));
}

} // namespace vantu::orvanta
