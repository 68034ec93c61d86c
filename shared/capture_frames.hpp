// The frames of a capture: a datagram with the IP and UDP headers that it had, or would have had, on the
// wire.
#pragma once

#include "shared/captured_datagram.hpp"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace vantu::orvanta {

// How a frame begins, by the numbers of the pcap format.
namespace link_type {
inline constexpr std::uint32_t null = 0;     // four bytes of the address family
inline constexpr std::uint32_t ethernet = 1; // as the loopback of Linux is captured
inline constexpr std::uint32_t raw = 101;    // the IP header
inline constexpr std::uint32_t loop = 108;   // as null
inline constexpr std::uint32_t linux_any = 113;
inline constexpr std::uint32_t ipv4 = 228;
inline constexpr std::uint32_t ipv6 = 229;
inline constexpr std::uint32_t linux_any_2 = 276;
} // namespace link_type

// Whether datagram_of can read frames of this link type.
[[nodiscard]] bool is_known_link_type(std::uint32_t link) noexcept;

// The frame of a datagram of at most 65,507 bytes, for link_type::raw; its checksums are right.
[[nodiscard]] std::vector<std::byte> raw_frame(const captured_datagram& what);

// The UDP datagram in a frame, without its time; empty where the frame has none, or not the whole of one.
[[nodiscard]] std::optional<captured_datagram> datagram_of(std::span<const std::byte> frame,
                                                           std::uint32_t link);

} // namespace vantu::orvanta
