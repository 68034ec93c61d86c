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

// A poll keeps its datagrams for the traffic sink: none of them, without a branch, while there is no sink.
struct no_notes {
    static sent send(vantu_orvanta_context& context, const byte_buffer& datagram) {
        return send_unlogged(context, datagram);
    }
    static void note_received(const vantu_orvanta_context& /*context*/, socket_status /*status*/) {}
};

struct notes {
    noted_datagram keep_alive;
    noted_datagram received;

    sent send(vantu_orvanta_context& context, const byte_buffer& datagram) {
        return send_unlogged(context, datagram, keep_alive);
    }
    void note_received(const vantu_orvanta_context& context, socket_status status) {
        if (status == socket_status::ok || context.receive.dropped.length != 0) {
            received.note_received(context.socket.get(), context.receive);
        }
    }
};

template <typename Notes>
std::int32_t send_keep_alive(vantu_orvanta_context& context, failures& failed, Notes& kept) {
    byte_buffer datagram(constants::mode_write);
    compose_datagram<op_code::keep_alive, direction::to_service>(datagram, 0, {});
    const sent result = kept.send(context, datagram);
    failed.send = result.failure;
    return result.code;
}

// The code of a receive; success also when nothing was waiting: then no operation is there.
template <typename Notes>
std::int32_t receive_datagram(vantu_orvanta_context& context, failures& failed, Notes& kept) {
    context.connection.receive_buffer().reset();
    const receive_result received = try_receive(context.socket.get(), context.receive);
    if (received.status == socket_status::would_block) {
        return vantu_orvanta_success;
    }
    kept.note_received(context, received.status);
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

template <typename Notes>
std::int32_t poll_under_lock(vantu_orvanta_context& context, vantu_orvanta_event& event, failures& failed,
                             Notes& kept) {
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
        if (const std::int32_t code = send_keep_alive(context, failed, kept); code != vantu_orvanta_success) {
            return code;
        }
    }
    if (!context.connection.has_operation()) {
        const std::int32_t code = receive_datagram(context, failed, kept);
        if (code != vantu_orvanta_success || !context.connection.has_operation()) {
            return code;
        }
    }
    return take_operation(context, event, failed);
}

std::int32_t poll_told(vantu_orvanta_context& context, vantu_orvanta_event& event, failures& failed) {
    notes kept;
    const std::int32_t code = poll_under_lock(context, event, failed, kept);
    kept.keep_alive.tell(context.traffic);
    kept.received.tell(context.traffic);
    return code;
}

std::int32_t poll_untold(vantu_orvanta_context& context, vantu_orvanta_event& event, failures& failed) {
    no_notes none;
    return poll_under_lock(context, event, failed, none);
}

} // namespace

std::int32_t poll(vantu_orvanta_context& context, vantu_orvanta_event& event) {
    failures failed;
    const std::int32_t code =
        context.traffic.is_off() ? poll_untold(context, event, failed) : poll_told(context, event, failed);
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
