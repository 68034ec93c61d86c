#include "conformance/visitor.hpp"

#include "conformance/verdict.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"
#include "vantu/orvanta/common/platform.hpp"
#include "vantu/orvanta/common/text_field.hpp"
#include "vantu/orvanta/common/version.hpp"
#include "vantu/orvanta/communication/header.hpp"
#include "vantu/orvanta/communication/service_status.hpp"

#include <algorithm>
#include <stdexcept>

namespace vantu::orvanta::conformance {

using namespace communication;

namespace {

socket_handle open_client_socket(surroundings& around) {
    for (std::size_t tried = 0; tried < around.client_ports.size(); ++tried) {
        const std::string& port = around.client_ports[around.next_client_port++ % around.client_ports.size()];
        const opened_socket opened = open_bound_socket("localhost", port);
        if (opened.status == socket_status::ok) {
            return opened.socket;
        }
    }
    throw std::runtime_error("no port of a client is free");
}

std::uint8_t code_in(std::span<const std::byte> request) {
    return static_cast<std::uint8_t>(request[sizeof(proto::header) + offsetof(proto::op, code)]);
}

} // namespace

proto::connect_body introduction(std::uint64_t keep_alive_ns) {
    proto::connect_body body{};
    body.keep_alive_ns = keep_alive_ns;
    body.process_id = platform::process_id();
    assign_text(body.client_name, "orvanta-conformance");
    assign_text(body.version_text, version.version_text);
    return body;
}

bool has_no_room(const std::optional<seen_operation>& answer) {
    if (!answer || answer->code != op_code::service_error) {
        return false;
    }
    const auto status = static_cast<service_status>(answer->body.back());
    return status == service_status::another_client_connected ||
           status == service_status::buffer_full_or_empty;
}

visitor::visitor(surroundings& around) : around_(around), socket_(open_client_socket(around)) {}

visitor::~visitor() {
    if (connected_) {
        try {
            send(datagram_of(op_code::disconnect, 0));
            (void)await({op_code::disconnected});
        } catch (const std::exception&) { // NOLINT(bugprone-empty-catch): the rule is over
        }
    }
    close_socket(socket_);
}

void visitor::send(std::span<const std::byte> datagram) {
    if (try_send(socket_, datagram, around_.service).status != socket_status::ok) {
        throw std::runtime_error("the system refuses to send");
    }
}

bool visitor::take() {
    byte_buffer buffer(constants::mode_read);
    receive_record record(buffer);
    switch (try_receive(socket_, record).status) {
    case socket_status::ok:
        break;
    case socket_status::would_block:
    case socket_status::timeout:
    case socket_status::unavailable:
        return false;
    case socket_status::connection_reset:
        return true;
    case socket_status::os_error:
        ++refused_;
        return true;
    }
    ++datagrams_;
    reading read = read_datagram({buffer.unread(), static_cast<std::size_t>(buffer.read_len())});
    std::move(read.operations.begin(), read.operations.end(), std::back_inserter(operations_));
    std::move(read.damages.begin(), read.damages.end(), std::back_inserter(damages_));
    return true;
}

void visitor::listen(std::int64_t for_ns) {
    const std::int64_t deadline_ns = around_.time.now_ns() + for_ns;
    do {
        around_.time.sleep(socket_, deadline_ns);
        while (take()) {
        }
    } while (around_.time.now_ns() < deadline_ns);
}

std::optional<seen_operation> visitor::await(std::initializer_list<std::uint8_t> codes) {
    const std::int64_t deadline_ns = around_.time.now_ns() + around_.answer_time_ns;
    for (;;) {
        for (; looked_at_ < operations_.size(); ++looked_at_) {
            if (std::find(codes.begin(), codes.end(), operations_[looked_at_].code) != codes.end()) {
                return operations_[looked_at_++];
            }
        }
        if (take()) {
            continue;
        }
        if (around_.time.now_ns() >= deadline_ns) {
            return std::nullopt;
        }
        around_.time.sleep(socket_, deadline_ns);
    }
}

std::optional<seen_operation> visitor::ask(std::span<const std::byte> request) {
    forget();
    send(request);
    const operation* const row = find_operation(code_in(request), direction::to_service);
    return await({op_code::service_error, row == nullptr ? op_code::service_error : row->answered_by});
}

bool visitor::try_connect(const proto::connect_body& with) {
    handshake_ = ask(datagram_of(op_code::connect, 0, bytes_of(with)));
    const bool accepted = handshake_ && handshake_->code == op_code::connected;
    connected_ = connected_ || accepted;
    return accepted;
}

void visitor::connect(const proto::connect_body& with) {
    if (!try_connect(with)) {
        stop("connect_is_answered", text_of(handshake_));
    }
}

void visitor::disconnect() {
    const std::optional<seen_operation> answer = ask(datagram_of(op_code::disconnect, 0));
    if (!answer || answer->code != op_code::disconnected) {
        stop("disconnect_is_answered", text_of(answer));
    }
    connected_ = false;
}

void visitor::forget() {
    while (take()) {
    }
    looked_at_ = operations_.size();
}

std::span<const seen_operation> visitor::news() const {
    return std::span(operations_).subspan(looked_at_);
}

std::optional<listed_device> visitor::find_device(std::uint8_t type) {
    const auto found = [this, type]() -> std::optional<listed_device> {
        for (const seen_operation& one : operations_) {
            if (one.code != op_code::device_added) {
                continue;
            }
            const auto listed = static_cast<std::uint8_t>(one.record().front());
            if (type == 0 || type == listed) {
                return listed_device{one.device_id(), listed};
            }
        }
        return std::nullopt;
    };
    if (const auto listed = found()) {
        return listed;
    }
    listen(around_.quiet_time_ns);
    return found();
}

} // namespace vantu::orvanta::conformance
