// Connecting: one attempt from one local port, and the walk over the local ports.
#pragma once

#include "runtime/context.hpp"

#include <cstdint>
#include <string>

namespace vantu::orvanta {

inline constexpr std::uint16_t first_client_port = 54321;
inline constexpr int client_port_count = 16;
inline constexpr std::size_t longest_port_text = 256;

// What a client says of itself and asks for when it connects; the same on every port.
struct introduction {
    std::string name;
    std::uint16_t value_a;
    std::uint16_t value_b;
    std::uint64_t keep_alive_ns;
    std::uint64_t reply_timeout_ns;
};

// One attempt, as vantu_orvanta_connect_ports describes it, without its checks for null. Holds the
// context's mutex, and so keeps polls waiting, until the service has answered or the time is up.
[[nodiscard]] std::int32_t connect_ports(vantu_orvanta_context& context, const std::string& client_port,
                                         const std::string& service_port, const introduction& client);

// Tries the client ports in order until one attempt neither times out nor fails to bind.
[[nodiscard]] std::int32_t connect(vantu_orvanta_context& context, const introduction& client);

// Reads a reply from the receive buffer up to the acceptance, whose id it stores. What follows the
// acceptance stays in the buffer. Returns 0, or the code with which the attempt fails.
[[nodiscard]] std::int32_t read_handshake_reply(byte_buffer& reply, device_table& devices,
                                                std::uint64_t& client_id);

} // namespace vantu::orvanta
