// Datagrams written out by hand: byte lists, little-endian fields, and the two records that frame a datagram.
// Nothing of the code under test.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace orvanta_tests {

using bytes = std::vector<std::uint8_t>;

[[nodiscard]] bytes join(std::initializer_list<bytes> parts);

// Little-endian fields.
[[nodiscard]] bytes u16(std::uint16_t value);
[[nodiscard]] bytes u32(std::uint32_t value);
[[nodiscard]] bytes u64(std::uint64_t value);

// count bytes that rise by one from first, wrapping at 256.
[[nodiscard]] bytes counting(std::uint8_t first, std::size_t count);
[[nodiscard]] bytes filled(std::size_t count, std::uint8_t value);

// A text, padded with zeros to size bytes.
[[nodiscard]] bytes text_field(std::string_view text, std::size_t size);

// An operation record FF, code, length, tag and its body; the length is the body's unless stated.
[[nodiscard]] bytes op(std::uint8_t code, std::uint8_t tag, const bytes& body = {});
[[nodiscard]] bytes op_of_length(std::uint8_t code, std::uint8_t tag, std::uint16_t length,
                                 const bytes& body);

// E9 9E 01 00 00 00 and the given operations; the same with the operations as hexadecimal text.
[[nodiscard]] bytes datagram(std::initializer_list<bytes> operations);
[[nodiscard]] bytes datagram(std::string_view operations);

// The bytes of a packed record.
template <typename Record> [[nodiscard]] bytes bytes_of(const Record& record) {
    const auto* at = reinterpret_cast<const std::uint8_t*>(&record);
    return {at, at + sizeof(Record)};
}

// "E9 9E 01", for messages and comparisons.
[[nodiscard]] std::string hex(const bytes& of);
// The bytes of such a text; its blanks may stand anywhere. Throws std::invalid_argument for
// other characters and for half a byte.
[[nodiscard]] bytes from_hex(std::string_view text);

} // namespace orvanta_tests
