#include "poll.hpp"

#include "rejection_log.hpp"
#include "send.hpp"
#include "socket_codes.hpp"
#include "vantu/orvanta/common/platform.hpp"
#include "vantu/orvanta/common/version.hpp"

#include <cstring>
#include <new>

namespace vantu::orvanta {
namespace {

using namespace communication;

bool has_come(std::int64_t due_ns) {
    // The cheap clock settles it in all but the last moments of each second.
    return platform::coarse_now_ns() + platform::coarse_clock_lag_ns >= due_ns &&
           platform::steady_now_ns() >= due_ns;
}

// Failures of one poll, to be logged after the mutex is free. The system's are numbers, 0 for none.
struct failures {
    rejection rejected;
    std::uint32_t send{0};
    std::uint32_t receive{0};
};

std::int32_t send_keep_alive(vantu_orvanta_context& context, failures& failed) {
    byte_buffer datagram(constants::mode_write);
    compose_datagram<op_code::keep_alive, direction::to_service>(datagram, 0, {});
    const sent result = send_unlogged(context, datagram);
    failed.send = result.failure;
    return result.code;
}

// The code of a receive; success also when nothing was waiting: then no operation is there.
std::int32_t receive_datagram(vantu_orvanta_context& context, failures& failed) {
    context.connection.receive_buffer().reset();
    const receive_result received = try_receive(context.socket.get(), context.receive);
    if (received.status == socket_status::would_block) {
        return vantu_orvanta_success;
    }
    if (received.status != socket_status::ok) {
        failed.receive = received.system_error;
        return client_code_from_socket_status(received.status);
    }
    return context.connection.begin_datagram(failed.rejected);
}

std::int32_t take_operation(vantu_orvanta_context& context, vantu_orvanta_event& event, failures& failed) {
    const std::int32_t code = context.connection.decode(event, failed.rejected);
    if (context.connection.is_over()) {
        context.close_under_lock();
    }
    if (code != vantu_orvanta_success) {
        return code;
    }
    const std::lock_guard lock(context.devices_mutex);
    try {
        return context.connection.apply(event);
    } catch (const std::bad_alloc&) {
        return vantu_orvanta_unexpected_error;
    }
}

std::int32_t poll_under_lock(vantu_orvanta_context& context, vantu_orvanta_event& event, failures& failed) {
    const std::lock_guard lock(context.mutex);
    if (socket_waiter* waiter = context.waiter.load(std::memory_order_relaxed);
        waiter != nullptr && !context.is_waiting.load(std::memory_order_relaxed)) {
        waiter->clear_wakes();
    }
    if (!context.socket.is_open()) {
        return vantu_orvanta_invalid_connection_state;
    }
    std::memset(&event, 0, sizeof(event));
    if (has_come(context.connection.due_ns())) {
        if (const std::int32_t code = send_keep_alive(context, failed); code != vantu_orvanta_success) {
            return code;
        }
    }
    if (!context.connection.has_operation()) {
        const std::int32_t code = receive_datagram(context, failed);
        if (code != vantu_orvanta_success || !context.connection.has_operation()) {
            return code;
        }
    }
    return take_operation(context, event, failed);
}

} // namespace

std::int32_t poll(vantu_orvanta_context& context, vantu_orvanta_event& event) {
    failures failed;
    const std::int32_t code = poll_under_lock(context, event, failed);
    if (failed.send != 0) {
        log_send_failure(failed.send);
    }
    if (failed.receive != 0) {
        log_receive_failure(failed.receive);
    }
    log_rejection(failed.rejected);
    return code;
}

} // namespace vantu::orvanta
