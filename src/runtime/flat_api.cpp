// The flat API besides requests and the polling thread: argument checks and a call.
#include "vantu/orvanta/orvanta.h"

#include "context.hpp"
#include "goodbye.hpp"
#include "handshake.hpp"
#include "network/socket.hpp"
#include "poll.hpp"
#include "vantu/orvanta/common/log.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"
#include "vantu/orvanta/common/platform.hpp"
#include "vantu/orvanta/common/version.hpp"

#include <new>

using namespace vantu::orvanta;

std::int32_t vantu_orvanta_init() {
    socket_startup();
    return vantu_orvanta_success;
}

std::int32_t vantu_orvanta_log_sink_set(vantu_orvanta_log_sink sink) {
    if (sink == nullptr) {
        set_log_sink({});
        return vantu_orvanta_success;
    }
    set_log_sink([sink](std::uint64_t opaque, log_level level, const std::string& path, std::uint64_t line,
                        const std::string& message) {
        sink(opaque, static_cast<std::uint32_t>(level), path.c_str(), line, message.c_str());
    });
    return vantu_orvanta_success;
}

std::int32_t vantu_orvanta_log_level_set(std::uint32_t level) {
    if (level > vantu_orvanta_log_error) {
        return vantu_orvanta_invalid_argument;
    }
    set_log_level(static_cast<log_level>(level));
    return vantu_orvanta_success;
}

vantu_orvanta_context* vantu_orvanta_context_create() {
    return new (std::nothrow) vantu_orvanta_context;
}

std::int32_t vantu_orvanta_connect(vantu_orvanta_context* context, const char* name, std::uint16_t value_a,
                                   std::uint16_t value_b, std::uint64_t keep_alive_ns,
                                   std::uint64_t reply_timeout_ns) {
    if (context == nullptr || name == nullptr) {
        return vantu_orvanta_invalid_argument;
    }
    try {
        return connect(*context, {name, value_a, value_b, keep_alive_ns, reply_timeout_ns});
    } catch (const std::bad_alloc&) {
        return vantu_orvanta_unexpected_error;
    }
}

std::int32_t vantu_orvanta_connect_ports(vantu_orvanta_context* context, const char* client_port,
                                         const char* service_port, const char* name, std::uint16_t value_a,
                                         std::uint16_t value_b, std::uint64_t keep_alive_ns,
                                         std::uint64_t reply_timeout_ns) {
    if (context == nullptr || client_port == nullptr || service_port == nullptr || name == nullptr) {
        return vantu_orvanta_invalid_argument;
    }
    try {
        return connect_ports(*context, client_port, service_port,
                             {name, value_a, value_b, keep_alive_ns, reply_timeout_ns});
    } catch (const std::bad_alloc&) {
        return vantu_orvanta_unexpected_error;
    }
}

std::int32_t vantu_orvanta_poll(vantu_orvanta_context* context, vantu_orvanta_event* event) {
    if (context == nullptr || event == nullptr) {
        return vantu_orvanta_invalid_argument;
    }
    return poll(*context, *event);
}

void vantu_orvanta_disconnect(vantu_orvanta_context* context) {
    if (context == nullptr) {
        return;
    }
    say_goodbye(*context);
    delete context;
}

std::int32_t vantu_orvanta_device_ids(vantu_orvanta_context* context, std::uint32_t* ids,
                                      std::size_t* count) {
    if (context == nullptr || ids == nullptr || count == nullptr) {
        return vantu_orvanta_invalid_argument;
    }
    if (!context->socket.is_open()) {
        return vantu_orvanta_invalid_connection_state;
    }
    const std::lock_guard lock(context->devices_mutex);
    return context->connection.devices().copy_ids(ids, *count) ? vantu_orvanta_success
                                                               : vantu_orvanta_buffer_full_or_empty;
}

std::int32_t vantu_orvanta_device_info(vantu_orvanta_context* context, std::uint32_t device_id,
                                       vantu_orvanta_device* device) {
    if (context == nullptr || device_id == 0 || device == nullptr) {
        return vantu_orvanta_invalid_argument;
    }
    if (!context->socket.is_open()) {
        return vantu_orvanta_invalid_connection_state;
    }
    const std::lock_guard lock(context->devices_mutex);
    return context->connection.devices().copy_device(device_id, *device) ? vantu_orvanta_success
                                                                         : vantu_orvanta_no_matching_device;
}

std::int32_t vantu_orvanta_sleep(std::uint64_t duration_ns) {
    platform::sleep_until_ns(time_after(platform::steady_now_ns(), duration_ns));
    return vantu_orvanta_success;
}
