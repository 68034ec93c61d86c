// The addresses of sockets as numbers, for those who tell of traffic. One source file a platform. Logs
// nothing.
#pragma once

#include "network/socket.hpp"

#include <array>
#include <cstddef>
#include <cstdint>

namespace vantu::orvanta {

struct internet_address {
    std::uint8_t version{0};           // 4 or 6; 0: not known, and the rest is 0
    std::array<std::byte, 16> bytes{}; // as on the wire; those of version 4 come first
    std::uint16_t port{0};
};

[[nodiscard]] internet_address internet_address_of(const socket_address& address,
                                                   std::int32_t length) noexcept;

// The address that the socket is bound to.
[[nodiscard]] internet_address local_address_of(socket_handle socket) noexcept;

} // namespace vantu::orvanta
