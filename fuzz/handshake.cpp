// The handshake: the request for any introduction against the reference writer, and any answer against the
// reference reader, with what follows an acceptance.
#include "datagrams.hpp"
#include "sessions/checked_connection.hpp"
#include "sessions/reference_writer.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

namespace {

using namespace orvanta_fuzz;
using namespace orvanta_tests;

std::string text_of(std::span<const std::uint8_t> bytes) {
    std::string text(bytes.begin(), bytes.end());
    std::replace(text.begin(), text.end(), '\0', '?');
    return text;
}

void write_request(script& input) {
    vantu::orvanta::introduction client;
    client.value_a = static_cast<std::uint16_t>(input.number(2));
    client.value_b = static_cast<std::uint16_t>(input.number(2));
    client.keep_alive_ns = input.number(8);
    client.reply_timeout_ns = 0;
    const auto process_id = static_cast<std::uint32_t>(input.number(4));
    client.name = text_of(input.bytes(input.byte() % 32));
    const std::string version = text_of(input.bytes(input.byte()));
    vantu::orvanta::byte_buffer request(vantu::orvanta::constants::mode_write);
    compose_connect(request, client, process_id, version);
    const packet expected = reference_connect(
        {client.value_a, client.value_b, client.keep_alive_ns, process_id, client.name, version});
    if (!std::ranges::equal(octets(request.unread(), request.read_len()), expected)) {
        throw difference("the request to connect has other bytes");
    }
}

void read_answer(std::uint8_t step, script& input) {
    datagram_builder built;
    build_answer(built, step, input);
    checked_connection client(assumptions::throw_failed);
    (void)client.connect(built.bytes(), 0);
    while (client.is_connected() && !client.wants_datagram()) {
        (void)client.poll(0, nullptr);
    }
    client.check_devices();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    script input(data, size);
    const std::uint8_t step = input.byte();
    if (step >= 192) {
        write_request(input);
    } else {
        read_answer(step, input);
    }
    return 0;
}
