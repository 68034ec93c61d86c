// The datagrams of a client, written a second time from docs/protocol.md alone. Nothing of the library is
// used here.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string_view>
#include <vector>

namespace orvanta_tests {

using packet = std::vector<std::byte>;
using octets = std::span<const std::byte>;

// A field of a body: its value and its bytes.
struct field {
    std::uint64_t value;
    int width;
};

// A datagram of one operation, whose length is that of its body.
[[nodiscard]] packet reference_datagram(std::uint8_t code, std::uint8_t tag,
                                        std::initializer_list<field> body);

// A client's introduction when it connects.
struct reference_introduction {
    std::uint16_t value_a;
    std::uint16_t value_b;
    std::uint64_t keep_alive_ns;
    std::uint32_t process_id;
    std::string_view name;         // at most 31 characters
    std::string_view version_text; // cut to 63 characters
};
[[nodiscard]] packet reference_connect(const reference_introduction& client);

} // namespace orvanta_tests
