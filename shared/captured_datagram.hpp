// A datagram as captures keep it: when it went, from where and to where.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace vantu::orvanta {

// An address and port of IPv4 or IPv6.
struct socket_place {
    bool is_ipv6{false};
    std::array<std::byte, 16> address{}; // in the network's order; IPv4 has the first four
    std::uint16_t port{0};

    bool operator==(const socket_place&) const = default;
};

struct captured_datagram {
    std::int64_t time_ns{0}; // since the beginning of 1970
    socket_place from;
    socket_place to;
    std::vector<std::byte> bytes;

    bool operator==(const captured_datagram&) const = default;
};

} // namespace vantu::orvanta
