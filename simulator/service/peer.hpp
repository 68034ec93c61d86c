// The other side of a datagram: its address, and which of the listening sockets it reached.
#pragma once

#include "network/socket.hpp"

#include <algorithm>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <tuple>

namespace vantu::orvanta::simulator {

// The listener is the caller's own number for the socket; the service core only hands it back.
struct peer {
    endpoint address;
    std::size_t listener{0};
};

// By listener and address, to the byte.
[[nodiscard]] inline std::strong_ordering operator<=>(const peer& left, const peer& right) noexcept {
    const auto& one = left.address.address.bytes;
    if (left.listener != right.listener || left.address.length != right.address.length) {
        return std::tie(left.listener, left.address.length) <=>
               std::tie(right.listener, right.address.length);
    }
    const auto used = static_cast<std::size_t>(std::clamp<std::int32_t>(left.address.length, 0, sizeof one));
    return std::memcmp(one, right.address.address.bytes, used) <=> 0;
}

[[nodiscard]] inline bool same_peer(const peer& left, const peer& right) noexcept {
    return std::is_eq(left <=> right);
}

} // namespace vantu::orvanta::simulator
