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

// The code of a receive; success also when nothing was waiting: then no operation is there.
std::int32_t receive_datagram(vantu_orvanta_context& context, rejection& rejected) {
    context.connection.receive_buffer().reset();
    const socket_status status = recv_packet(context.socket.get(), context.receive);
    if (status == socket_status::would_block) {
        return vantu_orvanta_success;
    }
    if (status != socket_status::ok) {
        return client_code_from_socket_status(status);
    }
    return context.connection.begin_datagram(rejected);
}

std::int32_t take_operation(vantu_orvanta_context& context, vantu_orvanta_event& event, rejection& rejected) {
    const std::int32_t code = context.connection.decode(event, rejected);
    if (context.connection.is_over()) {
        context.socket.close();
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

std::int32_t poll_under_lock(vantu_orvanta_context& context, vantu_orvanta_event& event,
                             rejection& rejected) {
    const std::lock_guard lock(context.mutex);
    if (!context.socket.is_open()) {
        return vantu_orvanta_invalid_connection_state;
    }
    std::memset(&event, 0, sizeof(event));
    if (has_come(context.connection.due_ns())) {
        if (const std::int32_t code = send_operation<op_code::keep_alive>(context, 0, {});
            code != vantu_orvanta_success) {
            return code;
        }
    }
    if (!context.connection.has_operation()) {
        const std::int32_t code = receive_datagram(context, rejected);
        if (code != vantu_orvanta_success || !context.connection.has_operation()) {
            return code;
        }
    }
    return take_operation(context, event, rejected);
}

} // namespace

std::int32_t poll(vantu_orvanta_context& context, vantu_orvanta_event& event) {
    rejection rejected;
    const std::int32_t code = poll_under_lock(context, event, rejected);
    log_rejection(rejected);
    return code;
}

} // namespace vantu::orvanta
