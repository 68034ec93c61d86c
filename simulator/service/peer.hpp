// The other side of a datagram: its address, and which of the listening sockets it reached.
#pragma once

#include "network/socket.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace vantu::orvanta::simulator {

// The listener is the caller's own number for the socket; the service core only hands it back.
struct peer {
    endpoint address;
    std::size_t listener{0};
};

// Same listener and same address, to the byte.
[[nodiscard]] inline bool same_peer(const peer& left, const peer& right) noexcept {
    const auto& one = left.address.address.bytes;
    const auto& other = right.address.address.bytes;
    const auto used = static_cast<std::size_t>(std::clamp<std::int32_t>(left.address.length, 0, sizeof one));
    return left.listener == right.listener && left.address.length == right.address.length &&
           std::equal(one, one + used, other);
}

} // namespace vantu::orvanta::simulator
