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

using namespace socket_shared;

void log_refusal(std::int64_t error) {
    log_here(log_level::warning, failure_text(unable_to_wait, error_text(error)));
}

} // namespace

struct socket_waiter::implementation {
    HANDLE event{CreateEventA(nullptr, FALSE, FALSE, nullptr)};

    implementation() = default;
    ~implementation() {
        if (event != nullptr) {
            CloseHandle(event);
        }
    }
    implementation(const implementation&) = delete;
    implementation& operator=(const implementation&) = delete;
};

std::unique_ptr<socket_waiter> socket_waiter::create() {
    std::unique_ptr<implementation> made(new (std::nothrow) implementation);
    if (made == nullptr) {
        log_refusal(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    if (made->event == nullptr) {
        log_refusal(GetLastError());
        return nullptr;
    }
    return std::unique_ptr<socket_waiter>(new (std::nothrow) socket_waiter(std::move(made)));
}

socket_waiter::socket_waiter(std::unique_ptr<implementation> made) : self_(std::move(made)) {}
socket_waiter::~socket_waiter() = default;

bool socket_waiter::watch(socket_handle socket) {
    if (WSAEventSelect(socket, self_->event, FD_READ) == 0) {
        return true;
    }
    log_refusal(WSAGetLastError());
    return false;
}

void socket_waiter::forget(socket_handle socket) {
    WSAEventSelect(socket, nullptr, 0);
}

void socket_waiter::wake() {
    SetEvent(self_->event);
}

// The event stays as it is: with a wake, a reset could lose a datagram's signal.
void socket_waiter::clear_wakes() {}

socket_waiter::result socket_waiter::wait_until(std::int64_t deadline_ns) {
    const platform::waitable_timer& timer = platform::timer_of_this_thread();
    // Timers may end a little before the clock.
    for (;;) {
        const bool timed = deadline_ns != latest_ns && timer.set(deadline_ns);
        const std::array<HANDLE, 2> handles{self_->event, timer.handle()};
        const DWORD limit =
            timed || deadline_ns == latest_ns ? INFINITE : platform::milliseconds_until(deadline_ns);
        // The first of two handles that are both set counts.
        const DWORD ready = WaitForMultipleObjects(timed ? 2 : 1, handles.data(), FALSE, limit);
        if (ready == WAIT_FAILED) {
            log_refusal(GetLastError());
            return result::failed;
        }
        if (ready == WAIT_OBJECT_0) {
            return result::ready;
        }
        if (platform::steady_now_ns() >= deadline_ns) {
            return result::timed_out;
        }
    }
}

std::intptr_t socket_waiter::handle() const {
    return reinterpret_cast<std::intptr_t>(self_->event);
}

} // namespace vantu::orvanta
