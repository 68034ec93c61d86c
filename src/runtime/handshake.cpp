// The handshake: one request, one reply.
#include "runtime/handshake.hpp"

#include "runtime/receive.hpp"
#include "runtime/status_codes.hpp"
#include "vantu/orvanta/client.hpp"
#include "vantu/orvanta/common/diagnostics/log.hpp"
#include "vantu/orvanta/common/diagnostics/version.hpp"
#include "vantu/orvanta/common/utils/format.hpp"
#include "vantu/orvanta/common/utils/platform.hpp"
#include "vantu/orvanta/common/utils/utils.hpp"
#include "vantu/orvanta/communication/compose.hpp"
#include "vantu/orvanta/communication/service_status.hpp"

#include <algorithm>
#include <limits>
#include <utility>

namespace vantu::orvanta {
namespace {

using namespace communication;

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

const std::string& announced_version() {
    static const std::string text =
        version.version_text.substr(0, sizeof(proto::connect_body::version_text) - 1);
    return text;
}

proto::connect_body connect_request(const introduction& client) {
    proto::connect_body body{};
    body.value_a = client.value_a;
    body.value_b = client.value_b;
    body.keep_alive_ns = client.keep_alive_ns;
    body.process_id = platform::process_id();
    assign_text(body.client_name, client.name);
    assign_text(body.version_text, announced_version());
    return body;
}

// An address text without the zero character that counts as part of it.
std::string without_final_zero(std::string text) {
    if (!text.empty() && text.back() == '\0') {
        text.pop_back();
    }
    return text;
}

std::int32_t refusal(byte_buffer& reply) {
    // Read without a check of its own, unlike every other body: a cut-off refusal ends the process.
    const auto& body = reply.read<proto::body<op_code::service_error, direction::to_client>>();
    switch (static_cast<service_status>(body.record.status)) {
    case service_status::another_client_connected:
        return vantu_orvanta_another_client_connected;
    case service_status::buffer_full_or_empty:
        return vantu_orvanta_buffer_full_or_empty;
    default:
        return vantu_orvanta_protocol_parse_failed;
    }
}

// Sends the request and waits for one datagram in answer.
std::int32_t exchange_request(socket_handle socket, const endpoint& service, const introduction& client,
                              receive_record& receive) {
    byte_buffer request(constants::mode_write);
    compose_datagram<op_code::connect, direction::to_service>(request, 0, connect_request(client));
    socket_status status = send_packet(socket, request, service);
    if (status != socket_status::ok) {
        return client_code_from_socket_status(status);
    }
    status = recv_packet_overlapped(socket, receive);
    if (status == socket_status::ok) {
        constexpr std::uint64_t longest = std::numeric_limits<std::int64_t>::max();
        const auto timeout_ns = static_cast<std::int64_t>(std::min(client.reply_timeout_ns, longest));
        status = get_overlapped_result(socket, receive, timeout_ns);
    }
    return client_code_from_socket_status(status);
}

void accept(vantu_orvanta_context& context, socket_handle socket, const endpoint& service,
            std::uint64_t client_id) {
    context.service = service;
    context.client_address_text = without_final_zero(stringify_socket(socket));
    context.client_id = client_id;
    context.process_id = platform::process_id();
    context.last_send_ns.store(platform::steady_now_ns(), std::memory_order_relaxed);
    context.connection.attach(socket);
    log_here(log_level::info, formatted("Connected: cid[{}], pid:[{}], client addr:[{}] -> service addr:{}",
                                        context.client_id, context.process_id, context.client_address_text,
                                        without_final_zero(stringify_addr(context.service))));
}

} // namespace

std::int32_t read_handshake_reply(byte_buffer& reply, device_table& devices, std::uint64_t& client_id) {
    if (!reply.can_read<proto::header>()) {
        return vantu_orvanta_protocol_parse_failed;
    }
    const auto& header = reply.read<proto::header>();
    if (header.magic != proto::header_magic || header.version != proto::protocol_version) {
        return vantu_orvanta_protocol_parse_failed;
    }
    while (reply.can_read<proto::op>()) {
        const auto& op = reply.read<proto::op>();
        if (op.magic != proto::op_magic) {
            return vantu_orvanta_protocol_parse_failed;
        }
        switch (op.code) {
        case op_code::connected:
            // Read without a check of its own, like the refusal.
            client_id = reply.read<proto::connected_body>().client_id;
            return vantu_orvanta_success;
        case op_code::service_error:
            return refusal(reply);
        case op_code::device_added:
        case op_code::device_info_orvanta3:
        case op_code::device_info_palmetron: {
            vantu_orvanta_event scratch{};
            if (const std::int32_t code = receive_operation(reply, devices, op, scratch); code != 0) {
                return code;
            }
            break;
        }
        default:
            log(log_level::warning, locations::handshake_operation,
                formatted("vantu_orvanta_connect_ports cannot handle op [{:#x}]", op.code));
            return vantu_orvanta_protocol_parse_failed;
        }
    }
    return vantu_orvanta_protocol_parse_failed;
}

std::int32_t connect_ports(vantu_orvanta_context& context, const std::string& client_port,
                           const std::string& service_port, const introduction& client) {
    const std::lock_guard lock(context.mutex);
    if (context.connection.is_open()) {
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
    byte_buffer& reply = context.receive.buffer;
    reply.reset();
    std::int32_t code = exchange_request(socket.get(), service.address, client, context.receive);
    std::uint64_t client_id = 0;
    if (code == vantu_orvanta_success) {
        code = read_handshake_reply(reply, context.devices, client_id);
    }
    if (code != vantu_orvanta_success) {
        reply.reset();
        return code;
    }
    accept(context, socket.release(), service.address, client_id);
    return vantu_orvanta_success;
}

std::int32_t connect(vantu_orvanta_context& context, const introduction& client) {
    for (int attempt = 0; attempt < client_port_count; ++attempt) {
        const std::string client_port = formatted("{}", first_client_port + attempt);
        const std::int32_t code = connect_ports(context, client_port, default_port(), client);
        log_here(log_level::info, formatted("Attempted to establish connection to port [{}] ret [{}]",
                                            client_port, error_message(code)));
        if (code != vantu_orvanta_timed_out && code != vantu_orvanta_socket_bind_failed) {
            return code;
        }
    }
    return vantu_orvanta_socket_bind_failed;
}

} // namespace vantu::orvanta
