// The answer to a request to connect, read byte by byte: the library ends the process at an acceptance that
// is cut short, and tells no difference between other damages.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace vantu::orvanta::ctl {

enum class answer_kind : std::uint8_t {
    accepted,
    refused,       // with a status
    other_version, // of the protocol
    foreign,       // not this protocol, or not an answer
    cut_short,     // it ends within what it begins
    closed_port,
    silence,
    not_sent, // the system refused
};

struct handshake_answer {
    answer_kind kind{answer_kind::silence};
    std::uint8_t status{0};   // of the service, when refused
    std::uint16_t version{0}; // of the protocol, when it is another one
    std::string raw{};        // what came: its size and first bytes; or the system's reason
};

// The answer that a datagram is.
[[nodiscard]] handshake_answer read_answer(std::span<const std::byte> datagram);

// Whether a datagram has an operation of this code.
[[nodiscard]] bool has_operation(std::span<const std::byte> datagram, std::uint8_t code);

} // namespace vantu::orvanta::ctl
