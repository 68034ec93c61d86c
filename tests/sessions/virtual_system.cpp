// The library's socket layer, clock and end of process, in terms of the virtual world.
#include "network/internet_address.hpp"
#include "network/socket.hpp"
#include "network/socket_waiter.hpp"
#include "sessions/differences.hpp"
#include "sessions/virtual_world.hpp"
#include "vantu/orvanta/common/assume.hpp"
#include "vantu/orvanta/common/log.hpp"
#include "vantu/orvanta/common/platform.hpp"

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>

namespace vantu::orvanta {
namespace {

using orvanta_tests::packet;
using orvanta_tests::virtual_world;

int port_of(socket_handle socket) {
    return static_cast<int>(socket);
}

socket_status take(int port, receive_record& record) {
    if (!virtual_world::current().has_datagram(port)) {
        return socket_status::would_block;
    }
    const packet bytes = virtual_world::current().take_datagram(port);
    record.buffer.compact();
    if (bytes.size() > record.buffer.write_len()) {
        return socket_status::os_error;
    }
    if (!bytes.empty()) {
        std::memcpy(record.buffer.unwritten(), bytes.data(), bytes.size());
    }
    record.buffer.skip_write(bytes.size());
    return socket_status::ok;
}

} // namespace

void socket_startup() {}

resolved_endpoint resolve_address(const std::string&, const std::string&) {
    return {};
}

opened_socket open_bound_socket(const std::string&, const std::string& port) {
    const int opened = virtual_world::current().open(std::stoi(port));
    if (opened < 0) {
        return {invalid_socket, socket_status::unavailable};
    }
    return {static_cast<socket_handle>(opened), socket_status::ok};
}

send_result try_send(socket_handle socket, std::span<const std::byte> bytes, const endpoint&) {
    virtual_world::current().send(port_of(socket), bytes);
    return {};
}

void log_send_failure(std::uint32_t) {}

receive_result try_receive(socket_handle socket, receive_record& record) {
    return {take(port_of(socket), record), 0};
}

void log_receive_failure(std::uint32_t) {}

socket_status recv_packet_overlapped(socket_handle, receive_record&) {
    return socket_status::ok;
}

socket_status get_overlapped_result(socket_handle socket, receive_record& record, std::int64_t timeout_ns) {
    virtual_world& world = virtual_world::current();
    world.await_datagram(port_of(socket), world.now_ns() + timeout_ns);
    const socket_status status = take(port_of(socket), record);
    return status == socket_status::would_block ? socket_status::timeout : status;
}

bool wait_for_packets(std::span<const socket_handle>, std::int64_t) {
    return false;
}

// No session waits: the world's time stands still unless it is moved.
std::unique_ptr<socket_waiter> socket_waiter::create(std::uint32_t& system_error) {
    system_error = 1;
    return nullptr;
}

void log_wait_failure(std::uint32_t) {}

std::string stringify_addr(const endpoint&) {
    return {"service\0", 8};
}

std::string stringify_socket(socket_handle socket) {
    return std::to_string(socket) + '\0';
}

// No session tells of its traffic.
internet_address internet_address_of(const socket_address&, std::int32_t) noexcept {
    return {};
}

internet_address local_address_of(socket_handle) noexcept {
    return {};
}

void close_socket(socket_handle& socket) {
    if (socket != invalid_socket) {
        virtual_world::current().close(port_of(socket));
    }
    socket = invalid_socket;
}

void assumption_failed() {
    throw orvanta_tests::failed_assumption("an assumption of the library failed");
}

void report_failed_assumption(const source_location&, const char* message) {
    throw orvanta_tests::failed_assumption(message);
}

namespace platform {

std::int64_t steady_now_ns() noexcept {
    return virtual_world::current().now_ns();
}

std::int64_t coarse_now_ns() noexcept {
    return virtual_world::current().now_ns();
}

void sleep_until_ns(std::int64_t deadline_ns) noexcept {
    virtual_world::current().advance_to(deadline_ns);
}

void make_sleeps_precise() noexcept {}

std::uint32_t process_id() noexcept {
    return 4711;
}

void debug_break() noexcept {}

} // namespace platform
} // namespace vantu::orvanta
