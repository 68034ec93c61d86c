#include "sessions/checked_connection.hpp"

#include "vantu/orvanta/error_codes.h"

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta;

} // namespace

void checked_connection::fill_buffer(octets bytes) {
    byte_buffer& buffer = connection_.receive_buffer();
    buffer.reset();
    if (!bytes.empty()) {
        std::memcpy(buffer.unwritten(), bytes.data(), bytes.size());
    }
    buffer.skip_write(bytes.size());
}

std::optional<int> checked_connection::connect(octets answer, std::int64_t now_ns) {
    const expected_handshake expected = expected_.connect(answer, now_ns);
    if (expected.ends_the_process && failing_ == assumptions::end_the_process) {
        return std::nullopt;
    }
    fill_buffer(answer);
    handshake_reply reply;
    std::int32_t code = 0;
    try {
        code = read_handshake_reply(connection_.receive_buffer(), reply);
    } catch (const failed_assumption&) {
        connection_.receive_buffer().reset();
        if (!expected.ends_the_process) {
            throw;
        }
        return std::nullopt;
    }
    if (expected.ends_the_process || code != expected.code) {
        throw difference("a handshake gave " + said(code, expected.code) +
                         (expected.ends_the_process ? ", and should have ended the process" : ""));
    }
    if (code != vantu_orvanta_success) {
        connection_.receive_buffer().reset();
        return code;
    }
    connection_.accept(std::move(reply), now_ns);
    if (connection_.client_id() != expected_.client_id()) {
        throw difference("the client id is another one");
    }
    check_devices();
    return code;
}

bool checked_connection::wants_datagram() const {
    const bool wants = expected_.wants_datagram();
    if (is_connected() && connection_.has_operation() == wants) {
        throw difference(wants ? "an operation is left in the buffer" : "no operation is left in the buffer");
    }
    return wants;
}

std::int32_t checked_connection::poll_core(std::int64_t now_ns, const octets* taken, poll_result& result) {
    rejection rejected;
    result.keep_alive = now_ns >= connection_.due_ns();
    if (result.keep_alive) {
        connection_.note_send(now_ns);
    }
    if (!connection_.has_operation()) {
        if (taken == nullptr) {
            return vantu_orvanta_success;
        }
        fill_buffer(*taken);
        if (const std::int32_t code = connection_.begin_datagram(rejected); code != vantu_orvanta_success) {
            return code;
        }
    }
    const std::int32_t code = connection_.decode(result.event, rejected);
    return code == vantu_orvanta_success ? connection_.apply(result.event) : code;
}

poll_result checked_connection::poll(std::int64_t now_ns, const octets* taken) {
    poll_result result;
    const bool was_connected = is_connected();
    const expected_poll expected = taken != nullptr ? expected_.poll(now_ns, *taken) : expected_.poll(now_ns);
    result.code = was_connected ? poll_core(now_ns, taken, result) : vantu_orvanta_invalid_connection_state;
    if (result.code != expected.code) {
        throw difference("a poll gave " + said(result.code, expected.code));
    }
    if (result.keep_alive != expected.keep_alive) {
        throw difference(expected.keep_alive ? "a keep-alive was due" : "no keep-alive was due");
    }
    if (expected.tells_event) {
        compare_bytes(result.event, expected.event, "an event");
        check_device(expected.device_id);
    }
    if (was_connected && connection_.is_over() == expected_.is_connected()) {
        throw difference("a goodbye was missed or made up");
    }
    if (is_connected() && connection_.due_ns() != expected_.keep_alive_due_ns()) {
        throw difference("a keep-alive is due at " +
                         said(connection_.due_ns(), expected_.keep_alive_due_ns()));
    }
    return result;
}

void checked_connection::note_send(std::int64_t now_ns) {
    connection_.note_send(now_ns);
    expected_.note_send(now_ns);
}

void checked_connection::check_device(std::uint32_t id) const {
    const device_octets* expected = expected_.device(id);
    vantu_orvanta_device device{};
    if (connection_.devices().copy_device(id, device) != (expected != nullptr)) {
        throw difference("device " + std::to_string(id) + (expected != nullptr ? " has no" : " has an") +
                         " entry");
    }
    if (expected != nullptr) {
        compare_bytes(device, *expected, "a device's record");
    }
}

void checked_connection::check_devices() const {
    const std::vector<std::uint32_t>& expected = expected_.device_ids();
    std::vector<std::uint32_t> ids(expected.size() + 1);
    std::size_t count = ids.size();
    if (!connection_.devices().copy_ids(ids.data(), count) || count != expected.size() ||
        !std::equal(expected.begin(), expected.end(), ids.begin())) {
        throw difference("the ids are others, or in another order");
    }
    if (count > 0) {
        const std::size_t room = count - 1;
        std::size_t copied = room;
        if (connection_.devices().copy_ids(ids.data(), copied) || copied != room) {
            throw difference("ids without room for all of them");
        }
    }
    for (const std::uint32_t id : expected) {
        check_device(id);
    }
}

} // namespace orvanta_tests
