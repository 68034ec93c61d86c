// Bytes written by hand: what tests send to the service, and what they expect of it.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace simulator_tests {

using bytes = std::vector<std::uint8_t>;

[[nodiscard]] bytes join(std::initializer_list<bytes> parts);
[[nodiscard]] bytes u32(std::uint32_t value);
[[nodiscard]] bytes u64(std::uint64_t value);

// A text, filled up with zeros to the size.
[[nodiscard]] bytes text_field(std::string_view text, std::size_t size);

// E9 9E 01 00 00 00, then the given operations.
[[nodiscard]] bytes datagram(std::initializer_list<bytes> operations);

// The bytes as "E9 9E 01".
[[nodiscard]] std::string hex(const bytes& content);

// The single precision number at a place of a datagram.
[[nodiscard]] float float_at(const bytes& content, std::size_t place);

// A connect request: 5 s of keep-alive, process 0x01020304, the name "tester".
[[nodiscard]] bytes connect_operation(std::uint8_t tag, std::uint64_t keep_alive_ns = 5'000'000'000);

// The first Orvanta3 and the first Palmetron, as the service lists them.
inline const bytes orvanta3_added{0xFF, 0x10, 0x18, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01,
                                  0x00, 0x01, 0x30, 0x6E, 0x2B, 0x84, 0x10, 0x5F, 0x3C, 0x4D,
                                  0x71, 0x9A, 0x03, 0xC5, 0x38, 0x00, 0x00, 0x00, 0x01};
inline const bytes orvanta3_details{0xFF, 0x17, 0x0D, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00,
                                    0x02, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x01, 0x01};
inline const bytes palmetron_added{0xFF, 0x10, 0x18, 0x00, 0x00, 0xE9, 0x03, 0x00, 0x00, 0x02,
                                   0x00, 0x01, 0x50, 0xB1, 0x47, 0x0D, 0x29, 0xE8, 0x62, 0x4A,
                                   0x15, 0x8C, 0x90, 0x7E, 0xD4, 0x00, 0x00, 0x00, 0x01};
inline const bytes palmetron_details{0xFF, 0x18, 0x0C, 0x00, 0x00, 0xE9, 0x03, 0x00, 0x00,
                                     0x02, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x01};

} // namespace simulator_tests
