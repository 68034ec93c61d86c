// Connecting: one attempt from one local port, and the walk over the local ports.
#pragma once

#include "context.hpp"
#include "core/handshake.hpp"

#include <cstdint>
#include <string>

namespace vantu::orvanta {

inline constexpr std::uint16_t first_client_port = 54321;
inline constexpr int client_port_count = 16;
inline constexpr std::size_t longest_port_text = 256;

// One attempt, as vantu_orvanta_connect_ports describes it, without its checks for null. Holds the
// context's mutex, and so keeps polls waiting, until the service has answered or the time is up.
// Throws std::bad_alloc, with the context as it was.
[[nodiscard]] std::int32_t connect_ports(vantu_orvanta_context& context, const std::string& client_port,
                                         const std::string& service_port, const introduction& client);

// Tries the client ports in order until one attempt neither times out nor fails to bind.
[[nodiscard]] std::int32_t connect(vantu_orvanta_context& context, const introduction& client);

} // namespace vantu::orvanta
