// The handshake: the request that a client sends, and the service's answer to it.
#pragma once

#include "core/device_table.hpp"
#include "core/rejection.hpp"
#include "vantu/orvanta/common/byte_buffer.hpp"

#include <cstdint>
#include <string>
#include <string_view>

namespace vantu::orvanta {

// A client's name and wishes, the same on every port.
struct introduction {
    std::string name; // at most 31 characters; a longer one ends the process
    std::uint16_t value_a;
    std::uint16_t value_b;
    std::uint64_t keep_alive_ns;
    std::uint64_t reply_timeout_ns;
};

// Writes the request into an empty buffer. The version's text is cut after 63 characters.
void compose_connect(byte_buffer& datagram, const introduction& client, std::uint32_t process_id,
                     std::string_view version_text);

// The content of an answer.
struct handshake_reply {
    std::uint64_t client_id{0};
    device_table devices; // listed before the acceptance
    rejection rejected;   // what the caller logs
};

// Reads an answer up to the acceptance; what follows the acceptance stays in the buffer. Returns:
//   vantu_orvanta_success                   accepted
//   vantu_orvanta_protocol_parse_failed     the answer is not understood, or another refusal
//   vantu_orvanta_no_matching_device        details of a device that is not listed with that type
//   vantu_orvanta_another_client_connected  refused: the service serves another client only
//   vantu_orvanta_buffer_full_or_empty      refused: the service has no room
// An acceptance or a refusal whose body is cut short ends the process. Throws std::bad_alloc.
[[nodiscard]] std::int32_t read_handshake_reply(byte_buffer& datagram, handshake_reply& reply);

} // namespace vantu::orvanta
