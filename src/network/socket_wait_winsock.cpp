// Waiting on several sockets at once, on Windows: one event for all of them, beside the timer. select and
// WSAPoll would round the time up to the system's tick.
#include "network/socket.hpp"

#include "socket_shared.hpp"
#include "vantu/orvanta/common/log.hpp"
#include "vantu/orvanta/common/per_thread_windows.hpp"
#include "vantu/orvanta/common/platform.hpp"
#include "vantu/orvanta/common/waitable_timer_windows.hpp"

#include <array>
#include <winsock2.h>

namespace vantu::orvanta {
namespace {

using namespace socket_shared;

// An event that the calling thread keeps.
class thread_event {
  public:
    thread_event() : handle_(WSACreateEvent()) {}
    ~thread_event() {
        if (handle_ != WSA_INVALID_EVENT) {
            WSACloseEvent(handle_);
        }
    }
    thread_event(const thread_event&) = delete;
    thread_event& operator=(const thread_event&) = delete;
    [[nodiscard]] WSAEVENT handle() const { return handle_; }

  private:
    WSAEVENT handle_;
};

bool fail(std::int64_t error) {
    log_here(log_level::warning, failure_text(unable_to_wait, error_text(error)));
    return false;
}

} // namespace

bool wait_for_packets(std::span<const socket_handle> sockets, std::int64_t deadline_ns) {
    const auto* event = platform::of_this_thread<thread_event>();
    if (event == nullptr) {
        return fail(ERROR_NOT_ENOUGH_MEMORY);
    }
    WSAResetEvent(event->handle());
    for (const socket_handle socket : sockets) {
        // The event is set at once when something waits already.
        if (socket != invalid_socket && WSAEventSelect(socket, event->handle(), FD_READ) != 0) {
            return fail(WSAGetLastError());
        }
    }
    const platform::waitable_timer& timer = platform::timer_of_this_thread();
    // Timers may end a little before the clock.
    for (;;) {
        const bool timed = timer.set(deadline_ns);
        const std::array<HANDLE, 2> handles{event->handle(), timer.handle()};
        // The first of two handles that are both set counts.
        const DWORD ready =
            WaitForMultipleObjects(timed ? 2 : 1, handles.data(), FALSE,
                                   timed ? INFINITE : platform::milliseconds_until(deadline_ns));
        if (ready == WAIT_FAILED) {
            return fail(GetLastError());
        }
        if (ready == WAIT_OBJECT_0) {
            return true;
        }
        if (platform::steady_now_ns() >= deadline_ns) {
            return false;
        }
    }
}

} // namespace vantu::orvanta
