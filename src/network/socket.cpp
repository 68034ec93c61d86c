// The part of the socket layer that is the same on every platform.
#include "network/socket.hpp"

#include "socket_shared.hpp"
#include "vantu/orvanta/common/format.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"

#include <algorithm>

namespace vantu::orvanta {

std::string default_port() {
    return "54320";
}

socket_status send_bytes(socket_handle socket, std::span<const std::byte> bytes, const endpoint& to) {
    const send_result sent = try_send(socket, bytes, to);
    if (sent.status == socket_status::os_error) {
        log_send_failure(sent.system_error);
    }
    return sent.status;
}

socket_status send_packet(socket_handle socket, byte_buffer& buffer, const endpoint& to) {
    const std::uint64_t length = buffer.read_len();
    const socket_status status = send_bytes(socket, {buffer.unread(), length}, to);
    if (status == socket_status::ok) {
        buffer.skip_read(length);
    }
    return status;
}

socket_status recv_packet(socket_handle socket, receive_record& record) {
    const receive_result received = try_receive(socket, record);
    if (received.status == socket_status::os_error) {
        log_receive_failure(received.system_error);
    }
    return received.status;
}

namespace socket_shared {

std::string failure_text(std::string_view operation, std::string_view system_text) {
    return formatted("message: {} with code: {}", operation, system_text);
}

std::string one_line_of(const char* system_text) {
    std::string text = system_text == nullptr ? "" : system_text;
    if (!text.empty() && text.back() == '\n') {
        text.pop_back();
    }
    return text.empty() ? "unknown" : text;
}

std::string unable_to_resolve(const std::string& host, const std::string& port) {
    return formatted("unable to getaddrinfo for '{}:{}'", host, port);
}

std::string no_valid_address(const std::string& host, const std::string& port) {
    return formatted("unable to find a valid address for '{}:{}'", host, port);
}

std::string no_valid_interface(const std::string& host, const std::string& port) {
    return formatted("no valid interface to bind '{}:{}'", host, port);
}

void prepare_receive(receive_record& record) {
    record.from_length = address_room;
    record.dropped = {};
    record.buffer.compact();
}

void prepare_overlapped_receive(receive_record& record) {
    prepare_receive(record);
    record.received = 0;
    record.wsabuf.length = static_cast<std::uint32_t>(record.buffer.write_len());
    record.wsabuf.data = record.buffer.unwritten();
    record.flags = 0;
    record.overlapped = {};
}

wait_limit wait_limit_of(std::int64_t timeout_ns, std::int64_t now_ns) {
    if (timeout_ns == 0) {
        return {true, false, latest_ns};
    }
    const std::int64_t milliseconds = std::max<std::int64_t>(timeout_ns / ns_per_millisecond, 0);
    const auto whole_ns = static_cast<std::uint64_t>(milliseconds * ns_per_millisecond);
    return {false, milliseconds == 0, time_after(now_ns, whole_ns)};
}

} // namespace socket_shared
} // namespace vantu::orvanta
