// Who a datagram came from: its address, and which of the listening sockets it reached.
#pragma once

#include "network/socket.hpp"

#include <cstddef>

namespace vantu::orvanta::simulator {

// The listener is the caller's own number for the socket; the service core only hands it back.
struct peer {
    endpoint address;
    std::size_t listener{0};
};

// Same listener and same address, to the byte.
[[nodiscard]] bool same_peer(const peer& left, const peer& right) noexcept;

} // namespace vantu::orvanta::simulator
