#include "ctl/replay/played_client.hpp"

#include "core/handshake.hpp"
#include "core/timing.hpp"
#include "ctl/replay/rejection_text.hpp"
#include "shared/datagram_operations.hpp"
#include "vantu/orvanta/common/format.hpp"
#include "vantu/orvanta/communication/operations.hpp"
#include "vantu/orvanta/error_codes.h"

#include <cstring>
#include <utility>
#include <vector>

namespace vantu::orvanta::ctl {
namespace {

using namespace communication;

// Whether the library ends its process over the answer: an acceptance or a refusal that is cut short.
bool ends_the_process(std::span<const std::byte> answer) {
    if (!has_the_header(answer)) {
        return false;
    }
    std::size_t at = sizeof(proto::header);
    while (at + sizeof(proto::op) <= answer.size()) {
        proto::op op{};
        std::memcpy(&op, answer.data() + at, sizeof op);
        at += sizeof op;
        const operation* const row = find_operation(op.code, direction::to_client);
        if (op.magic != proto::op_magic || row == nullptr) {
            return false;
        }
        const bool is_whole = at + row->body_size <= answer.size();
        if (op.code == op_code::connected || op.code == op_code::service_error) {
            return !is_whole;
        }
        at += row->body_size;
    }
    return false;
}

std::vector<std::uint32_t> ids_of(const device_table& devices) {
    std::vector<std::uint32_t> ids(16);
    std::size_t count = ids.size();
    while (!devices.copy_ids(ids.data(), count)) {
        ids.resize(2 * ids.size());
        count = ids.size();
    }
    ids.resize(count);
    return ids;
}

} // namespace

bool has_the_header(std::span<const std::byte> datagram) {
    proto::header header{};
    if (datagram.size() < sizeof header) {
        return false;
    }
    std::memcpy(&header, datagram.data(), sizeof header);
    return header.magic == proto::header_magic && header.version == proto::protocol_version;
}

void played_client::send_goodbye(std::int64_t time_ns) {
    if (state_ == state::unknown || state_ == state::open) {
        state_ = state::leaving;
        goodbye_ns_ = time_ns;
    }
}

void played_client::receive(std::int64_t time_ns, std::span<const std::byte> datagram, const listener& told) {
    ++counts_.datagrams;
    if (state_ == state::unknown) {
        state_ = find_operation_in(datagram, op_code::connected) ? state::awaiting_answer : state::open;
    }
    if (state_ == state::leaving && time_ns >= goodbye_deadline_ns(goodbye_ns_)) {
        state_ = state::closed;
    }
    switch (state_) {
    case state::awaiting_answer:
        read_answer(time_ns, datagram, told);
        return;
    case state::unknown:
    case state::open:
    case state::leaving:
        read_datagram(datagram, told);
        return;
    case state::closed:
        reject(vantu_orvanta_invalid_connection_state, "the client has no connection", told);
        return;
    }
}

bool played_client::fill(std::span<const std::byte> datagram, const listener& told) {
    byte_buffer& buffer = connection_.receive_buffer();
    buffer.reset();
    if (datagram.size() > buffer.write_len()) {
        reject(vantu_orvanta_unexpected_error,
               formatted("it has {} bytes, and the library takes {}", datagram.size(), buffer.write_len()),
               told);
        return false;
    }
    if (!datagram.empty()) {
        std::memcpy(buffer.unwritten(), datagram.data(), datagram.size());
    }
    buffer.skip_write(datagram.size());
    return true;
}

void played_client::read_answer(std::int64_t time_ns, std::span<const std::byte> datagram,
                                const listener& told) {
    state_ = state::closed;
    if (ends_the_process(datagram)) {
        reject(vantu_orvanta_protocol_parse_failed,
               "an acceptance or a refusal is cut short, over which the library ends its process", told);
        return;
    }
    if (!fill(datagram, told)) {
        return;
    }
    handshake_reply reply;
    if (const std::int32_t code = read_handshake_reply(connection_.receive_buffer(), reply);
        code != vantu_orvanta_success) {
        reject(code, text_of_refused_answer(code, reply.rejected), told);
        return;
    }
    told(replayed_connection{reply.client_id, ids_of(reply.devices)});
    connection_.accept(std::move(reply), time_ns);
    state_ = state::open;
    read_operations(told);
}

void played_client::read_datagram(std::span<const std::byte> datagram, const listener& told) {
    if (!fill(datagram, told)) {
        return;
    }
    rejection rejected;
    if (const std::int32_t code = connection_.begin_datagram(rejected); code != vantu_orvanta_success) {
        reject(code, text_of(rejected), told);
        return;
    }
    read_operations(told);
}

void played_client::read_operations(const listener& told) {
    while (state_ != state::closed && connection_.has_operation()) {
        read_operation(told);
    }
}

void played_client::read_operation(const listener& told) {
    const byte_buffer& buffer = connection_.receive_buffer();
    proto::op op{};
    std::memcpy(&op, buffer.unread(), sizeof op);
    const std::size_t body_size = buffer.read_len() - sizeof op;
    rejection rejected;
    vantu_orvanta_event event{};
    std::int32_t code = connection_.decode(event, rejected);
    if (code != vantu_orvanta_success) {
        reject(code,
               rejected.reason == reject_reason::none ? text_of_refused_operation(op, body_size)
                                                      : text_of(rejected),
               told);
        return;
    }
    code = connection_.apply(event);
    if (code != vantu_orvanta_success) {
        reject(code, formatted("device {} is not listed with the type of its details", event.device_id),
               told);
        return;
    }
    const bool is_kept = state_ == state::leaving;
    if (connection_.is_over()) {
        state_ = state::closed;
    }
    if (event.event_type == vantu_orvanta_event_none) {
        return;
    }
    ++(is_kept ? counts_.discarded : counts_.events);
    if (!is_kept) {
        told(event);
    }
}

// The goodbye's wait for its answer ends with the first poll that fails.
void played_client::reject(std::int32_t code, std::string reason, const listener& told) {
    ++counts_.rejected;
    if (state_ == state::leaving) {
        state_ = state::closed;
    }
    told(replayed_rejection{code, std::move(reason)});
}

} // namespace vantu::orvanta::ctl
