#include "simulator/service/service.hpp"

#include "simulator/service/streams.hpp"
#include "vantu/orvanta/common/format.hpp"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string>
#include <utility>

namespace vantu::orvanta::simulator {

using namespace communication;

struct service::received_operation {
    const peer& from;
    proto::op record;
    std::span<const std::byte> body;
    std::int64_t now_ns;
};

namespace {

template <typename Record> Record take_record(std::span<const std::byte>& unread) {
    Record record;
    std::memcpy(&record, unread.data(), sizeof record);
    unread = unread.subspan(sizeof record);
    return record;
}

// The name as one line of plain text, whatever its bytes.
std::string printable_name(const proto::connect_body& body) {
    const auto* end = std::find(std::begin(body.client_name), std::end(body.client_name), '\0');
    std::string name(std::begin(body.client_name), end);
    std::replace_if(
        name.begin(), name.end(), [](char letter) { return letter < ' ' || letter > '~'; }, '?');
    return name;
}

template <std::size_t size> bool ends_in_zero(const char (&field)[size]) {
    return std::find(std::begin(field), std::end(field), '\0') != std::end(field);
}

} // namespace

service::service(service_settings settings, std::vector<device> devices)
    : settings_(std::move(settings)), state_period_ns_(state_period_of(settings_.rate_hz)),
      devices_(std::move(devices)), clients_(settings_.first_client_id) {}

void service::tell(const std::string& line) const {
    if (settings_.narrate) {
        settings_.narrate(line);
    }
}

void service::refuse(const peer& to, std::uint8_t tag, std::uint32_t device_id, service_status status) {
    tell(formatted("refused with status {:#x}, {}; device {}, tag {}", static_cast<unsigned>(status),
                   service_status_message(static_cast<std::int8_t>(status)), device_id, tag));
    out_.send<op_code::service_error>(to, tag, {device_id, {static_cast<std::uint8_t>(status)}});
}

void service::receive(const peer& from, std::span<const std::byte> datagram, std::int64_t now_ns) {
    if (datagram.size() < sizeof(proto::header)) {
        return;
    }
    const auto header = take_record<proto::header>(datagram);
    if (header.magic != proto::header_magic) {
        return;
    }
    if (header.version != proto::protocol_version) {
        refuse(from, 0, 0, service_status::invalid_version);
        return;
    }
    forget_silent(now_ns);
    if (client* known = clients_.find(from); known != nullptr) {
        known->last_heard_ns = now_ns;
    }
    while (datagram.size() >= sizeof(proto::op)) {
        const auto record = take_record<proto::op>(datagram);
        if (record.magic != proto::op_magic) {
            refuse(from, 0, 0, service_status::invalid_operation);
            return;
        }
        const std::size_t length = std::min<std::size_t>(record.length, datagram.size());
        receive_operation({from, record, datagram.first(length), now_ns});
        datagram = datagram.subspan(length);
    }
}

void service::receive_operation(const received_operation& what) {
    const auto [magic, code, length, tag] = what.record;
    if (code == op_code::service_error) {
        return; // an error answered with an error could go on for ever
    }
    const operation* row = find_operation(code, direction::to_service);
    if (row == nullptr) {
        refuse(what.from, tag, 0, service_status::invalid_operation);
        return;
    }
    if (length != row->body_size || what.body.size() != row->body_size) {
        refuse(what.from, tag, 0, service_status::invalid_body);
        return;
    }
    switch (code) {
    case op_code::keep_alive:
        return;
    case op_code::connect:
        connect(what);
        return;
    case op_code::disconnect:
        disconnect(what);
        return;
    default:
        break;
    }
    client* known = clients_.find(what.from);
    const service_status status =
        known == nullptr ? service_status::client_not_connected
                         : carry_out({clients_, *known, devices_, out_, settings_.save, settings_.narrate,
                                      state_period_ns_, what.now_ns, code, tag, what.body});
    if (status != service_status::nil) {
        refuse(what.from, tag, named_device(what.body), status);
    }
}

void service::connect(const received_operation& what) {
    auto unread = what.body;
    const auto body = take_record<proto::connect_body>(unread);
    const std::uint8_t tag = what.record.tag;
    if (!ends_in_zero(body.client_name) || !ends_in_zero(body.version_text)) {
        refuse(what.from, tag, 0, service_status::invalid_argument);
        return;
    }
    if (clients_.find(what.from) == nullptr) {
        if (settings_.single_client && !clients_.all().empty()) {
            refuse(what.from, tag, 0, service_status::another_client_connected);
            return;
        }
        if (clients_.is_full()) {
            refuse(what.from, tag, 0, service_status::buffer_full_or_empty);
            return;
        }
    }
    client& admitted = clients_.admit(what.from);
    admitted.name = printable_name(body);
    admitted.keep_alive_ns = body.keep_alive_ns;
    admitted.last_heard_ns = what.now_ns;
    const std::uint32_t process = body.process_id;
    tell(formatted("client {}: connected, '{}', process {}", admitted.id, admitted.name, process));
    accept_client(out_, what.from, tag, admitted.id, devices_, settings_.announce);
}

// Also confirmed to a stranger: a goodbye may come twice, or late.
void service::disconnect(const received_operation& what) {
    if (const client* known = clients_.find(what.from); known != nullptr) {
        tell(formatted("client {}: said goodbye", known->id));
        clients_.forget(what.from);
    }
    out_.send<op_code::disconnected>(what.from, what.record.tag, {});
}

void service::forget_silent(std::int64_t now_ns) {
    for (client silent; clients_.take_silent(now_ns, silent);) {
        tell(formatted("client {}: forgotten after its silence", silent.id));
    }
}

void service::tick(std::int64_t now_ns) {
    forget_silent(now_ns);
    for (client& one : clients_.all()) {
        send_due(out_, one, devices_, state_period_ns_, now_ns);
    }
}

std::int64_t service::next_due_ns() const {
    std::int64_t soonest = never_ns;
    for (const client& one : clients_.all()) {
        // A client is forgotten after its last moment, not in it.
        const std::int64_t alive_until = one.alive_until_ns();
        soonest = std::min({soonest, next_due_of(one), alive_until == never_ns ? never_ns : alive_until + 1});
    }
    return soonest;
}

} // namespace vantu::orvanta::simulator
