// Waiting for a reason to poll.
#include "vantu/orvanta/wait.h"

#include "context.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"
#include "vantu/orvanta/common/platform.hpp"

#include <algorithm>
#include <mutex>

using namespace vantu::orvanta;

namespace {

// Whether a poll would find something to do without the socket.
enum class reason : std::uint8_t { none, poll_now, closed, no_waiter };

reason look(vantu_orvanta_context& context) {
    const std::lock_guard lock(context.mutex);
    if (!context.socket.is_open()) {
        return reason::closed;
    }
    if (context.connection.has_operation()) {
        return reason::poll_now;
    }
    return context.waiter_under_lock() == nullptr ? reason::no_waiter : reason::none;
}

// The waiter, made when there is none yet; null when that fails.
socket_waiter* waiter_of(vantu_orvanta_context& context) {
    if (socket_waiter* waiter = context.waiter.load(std::memory_order_acquire); waiter != nullptr) {
        return waiter;
    }
    const std::lock_guard lock(context.mutex);
    return context.waiter_under_lock();
}

std::int32_t sleep(vantu_orvanta_context& context, std::int64_t deadline_ns) {
    socket_waiter& waiter = *context.waiter.load(std::memory_order_acquire);
    for (;;) {
        const std::int64_t due_ns = context.connection.due_ns();
        switch (waiter.wait_until(std::min(deadline_ns, due_ns))) {
        case socket_waiter::result::ready:
            return context.socket.is_open() ? vantu_orvanta_success : vantu_orvanta_invalid_connection_state;
        case socket_waiter::result::failed:
            return vantu_orvanta_unexpected_error;
        case socket_waiter::result::timed_out:
            break;
        }
        const std::int64_t now_ns = platform::steady_now_ns();
        if (now_ns >= context.connection.due_ns()) {
            return vantu_orvanta_success;
        }
        if (now_ns >= deadline_ns) {
            return vantu_orvanta_timed_out;
        }
        // A request of another thread has put the keep-alive off.
    }
}

} // namespace

std::int32_t vantu_orvanta_wait(vantu_orvanta_context* context, std::uint64_t timeout_ns) {
    if (context == nullptr) {
        return vantu_orvanta_invalid_argument;
    }
    const std::int64_t deadline_ns = time_after(platform::steady_now_ns(), timeout_ns);
    switch (look(*context)) {
    case reason::closed:
        return vantu_orvanta_invalid_connection_state;
    case reason::poll_now:
        return vantu_orvanta_success;
    case reason::no_waiter:
        return vantu_orvanta_unexpected_error;
    case reason::none:
        break;
    }
    return sleep(*context, deadline_ns);
}

std::int32_t vantu_orvanta_wake(vantu_orvanta_context* context) {
    if (context == nullptr) {
        return vantu_orvanta_invalid_argument;
    }
    socket_waiter* waiter = waiter_of(*context);
    if (waiter == nullptr) {
        return vantu_orvanta_unexpected_error;
    }
    waiter->wake();
    return vantu_orvanta_success;
}

std::int32_t vantu_orvanta_wait_handle(vantu_orvanta_context* context, std::intptr_t* handle) {
    if (context == nullptr || handle == nullptr) {
        return vantu_orvanta_invalid_argument;
    }
    const socket_waiter* waiter = waiter_of(*context);
    if (waiter == nullptr) {
        return vantu_orvanta_unexpected_error;
    }
    *handle = waiter->handle();
    return vantu_orvanta_success;
}

std::int32_t vantu_orvanta_next_due(vantu_orvanta_context* context, std::uint64_t* steady_ns) {
    if (context == nullptr || steady_ns == nullptr) {
        return vantu_orvanta_invalid_argument;
    }
    const std::lock_guard lock(context->mutex);
    if (!context->socket.is_open()) {
        return vantu_orvanta_invalid_connection_state;
    }
    *steady_ns =
        context->connection.has_operation() ? 0 : static_cast<std::uint64_t>(context->connection.due_ns());
    return vantu_orvanta_success;
}
