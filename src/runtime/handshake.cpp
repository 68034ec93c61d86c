#include "handshake.hpp"

#include "rejection_log.hpp"
#include "socket_codes.hpp"
#include "vantu/orvanta/common/format.hpp"
#include "vantu/orvanta/common/log.hpp"
#include "vantu/orvanta/common/platform.hpp"
#include "vantu/orvanta/common/version.hpp"

#include <algorithm>
#include <limits>
#include <optional>
#include <span>
#include <utility>

namespace vantu::orvanta {
namespace {

constexpr const char* service_host = "localhost";

// Closes a socket that nobody took over.
class socket_guard {
  public:
    explicit socket_guard(socket_handle socket) : socket_(socket) {}
    ~socket_guard() { close_socket(socket_); }
    socket_guard(const socket_guard&) = delete;
    socket_guard& operator=(const socket_guard&) = delete;

    [[nodiscard]] socket_handle get() const { return socket_; }
    [[nodiscard]] socket_handle release() { return std::exchange(socket_, invalid_socket); }

  private:
    socket_handle socket_;
};

// An address text without the zero character that counts as part of it.
std::string without_final_zero(std::string text) {
    if (!text.empty()) {
        text.pop_back();
    }
    return text;
}

// The datagrams of one attempt, told when it ends, with whatever outcome and without a lock.
class told_exchange {
  public:
    explicit told_exchange(traffic_tap& to) : to_(to) {}
    ~told_exchange() {
        request.tell(to_);
        reply.tell(to_);
    }
    told_exchange(const told_exchange&) = delete;
    told_exchange& operator=(const told_exchange&) = delete;

    noted_datagram request;
    noted_datagram reply;

  private:
    traffic_tap& to_;
};

// Sends the request and waits for one datagram in answer, which comes into the emptied receive buffer. What
// is told is null when nobody listens.
std::int32_t exchange_request(vantu_orvanta_context& context, socket_handle socket, const endpoint& service,
                              const introduction& client, told_exchange* told) {
    byte_buffer request(constants::mode_write);
    compose_connect(request, client, platform::process_id(), version.version_text);
    const std::span<const std::byte> bytes{request.unread(), request.read_len()};
    const moment before = told == nullptr ? moment{} : moment_now();
    socket_status status = send_packet(socket, request, service);
    if (status != socket_status::ok) {
        return client_code_from_socket_status(status);
    }
    if (told != nullptr) {
        told->request.note_sent(before, socket, bytes, service);
    }
    context.connection.receive_buffer().reset();
    status = recv_packet_overlapped(socket, context.receive);
    if (status == socket_status::ok) {
        constexpr std::uint64_t longest = std::numeric_limits<std::int64_t>::max();
        const auto timeout_ns = static_cast<std::int64_t>(std::min(client.reply_timeout_ns, longest));
        status = get_overlapped_result(socket, context.receive, timeout_ns);
    }
    if (told != nullptr && (status == socket_status::ok || context.receive.dropped.length != 0)) {
        told->reply.note_received(socket, context.receive);
    }
    return client_code_from_socket_status(status);
}

// All that can fail comes before the first change of the context.
std::int32_t accept(vantu_orvanta_context& context, socket_guard& socket, const endpoint& service,
                    handshake_reply&& reply) {
    std::string client_address = without_final_zero(stringify_socket(socket.get()));
    if (socket_waiter* waiter = context.waiter.load(std::memory_order_relaxed); waiter != nullptr) {
        if (const std::uint32_t error = waiter->watch(socket.get()); error != 0) {
            log_wait_failure(error);
            return vantu_orvanta_unexpected_error;
        }
    }
    context.service = service;
    context.client_address_text = std::move(client_address);
    context.process_id = platform::process_id();
    {
        const std::lock_guard lock(context.devices_mutex);
        context.connection.accept(std::move(reply), platform::steady_now_ns());
    }
    context.socket.attach(socket.release());
    return vantu_orvanta_success;
}

std::int32_t attempt(vantu_orvanta_context& context, const std::string& client_port,
                     const std::string& service_port, const introduction& client, rejection& rejected,
                     told_exchange* told) {
    const std::lock_guard lock(context.mutex);
    if (context.socket.is_open()) {
        return vantu_orvanta_invalid_connection_state;
    }
    if (service_port.size() > longest_port_text || client_port.size() > longest_port_text) {
        return vantu_orvanta_invalid_argument;
    }
    const opened_socket opened = open_bound_socket(service_host, client_port);
    socket_guard socket(opened.socket);
    if (opened.status != socket_status::ok) {
        return client_code_from_socket_status(opened.status);
    }
    const resolved_endpoint service = resolve_address(service_host, service_port);
    if (service.status != socket_status::ok) {
        return client_code_from_socket_status(service.status);
    }
    if (const std::int32_t code = exchange_request(context, socket.get(), service.address, client, told);
        code != vantu_orvanta_success) {
        return code;
    }
    handshake_reply reply;
    const std::int32_t code = read_handshake_reply(context.connection.receive_buffer(), reply);
    rejected = reply.rejected;
    if (code != vantu_orvanta_success) {
        return code;
    }
    return accept(context, socket, service.address, std::move(reply));
}

} // namespace

std::int32_t connect_ports(vantu_orvanta_context& context, const std::string& client_port,
                           const std::string& service_port, const introduction& client) {
    rejection rejected;
    std::int32_t code = vantu_orvanta_success;
    {
        std::optional<told_exchange> told;
        if (!context.traffic.is_off()) {
            told.emplace(context.traffic);
        }
        code = attempt(context, client_port, service_port, client, rejected, told ? &*told : nullptr);
    }
    log_rejection(rejected);
    if (code == vantu_orvanta_success) {
        log_here(log_level::info,
                 formatted("Connected: cid[{}], pid:[{}], client addr:[{}] -> service addr:{}",
                           context.connection.client_id(), context.process_id, context.client_address_text,
                           without_final_zero(stringify_addr(context.service))));
    }
    return code;
}

std::int32_t connect(vantu_orvanta_context& context, const introduction& client) {
    for (int i = 0; i < client_port_count; ++i) {
        const std::string client_port = formatted("{}", first_client_port + i);
        const std::int32_t code = connect_ports(context, client_port, default_port(), client);
        log_here(log_level::info, formatted("Attempted to establish connection to port [{}] ret [{}]",
                                            client_port, vantu_orvanta_error_message(code)));
        if (code != vantu_orvanta_timed_out && code != vantu_orvanta_socket_bind_failed) {
            return code;
        }
    }
    return vantu_orvanta_socket_bind_failed;
}

} // namespace vantu::orvanta
