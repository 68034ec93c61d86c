// Waiting for a reason to poll.
#include "vantu/orvanta/wait.h"

#include "context.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"
#include "vantu/orvanta/common/platform.hpp"

#include <algorithm>
#include <mutex>

using namespace vantu::orvanta;

namespace {

std::int32_t refused(std::uint32_t system_error) {
    log_wait_failure(system_error);
    return vantu_orvanta_unexpected_error;
}

// The waiter, made when there is none yet; null, after a warning, when that fails.
socket_waiter* waiter_of(vantu_orvanta_context& context) {
    socket_waiter* waiter = context.waiter.load(std::memory_order_acquire);
    if (waiter != nullptr) {
        return waiter;
    }
    std::uint32_t system_error = 0;
    {
        const std::lock_guard lock(context.mutex);
        waiter = context.waiter_under_lock(system_error);
    }
    if (waiter == nullptr) {
        log_wait_failure(system_error);
    }
    return waiter;
}

enum class first_look : std::uint8_t { may_sleep, has_operation, is_closed, has_no_waiter };

// Looks for what no handle tells of, and announces the sleep.
first_look look(vantu_orvanta_context& context, std::uint32_t& system_error) {
    const std::lock_guard lock(context.mutex);
    if (!context.socket.is_open()) {
        return first_look::is_closed;
    }
    if (context.connection.has_operation()) {
        return first_look::has_operation;
    }
    if (context.waiter_under_lock(system_error) == nullptr) {
        return first_look::has_no_waiter;
    }
    context.is_waiting.store(true, std::memory_order_relaxed);
    return first_look::may_sleep;
}

std::int32_t sleep(vantu_orvanta_context& context, std::int64_t deadline_ns) {
    socket_waiter& waiter = *context.waiter.load(std::memory_order_acquire);
    for (;;) {
        const std::int64_t due_ns = context.connection.due_ns();
        const socket_waiter::result waited = waiter.wait_until(std::min(deadline_ns, due_ns));
        switch (waited.outcome) {
        case socket_waiter::status::ready:
            return context.socket.is_open() ? vantu_orvanta_success : vantu_orvanta_invalid_connection_state;
        case socket_waiter::status::failed:
            return refused(waited.system_error);
        case socket_waiter::status::timed_out:
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
    std::uint32_t system_error = 0;
    switch (look(*context, system_error)) {
    case first_look::is_closed:
        return vantu_orvanta_invalid_connection_state;
    case first_look::has_operation:
        return vantu_orvanta_success;
    case first_look::has_no_waiter:
        return refused(system_error);
    case first_look::may_sleep:
        break;
    }
    const std::int32_t code = sleep(*context, deadline_ns);
    context->is_waiting.store(false, std::memory_order_relaxed);
    return code;
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
