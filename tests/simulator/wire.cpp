// Bytes written by hand.
#include "simulator/wire.hpp"

#include <cstdio>
#include <cstring>

namespace simulator_tests {

bytes join(std::initializer_list<bytes> parts) {
    bytes whole;
    for (const bytes& part : parts) {
        whole.insert(whole.end(), part.begin(), part.end());
    }
    return whole;
}

bytes u32(std::uint32_t value) {
    bytes field;
    for (unsigned shift = 0; shift < 32; shift += 8) {
        field.push_back(static_cast<std::uint8_t>(value >> shift));
    }
    return field;
}

bytes u64(std::uint64_t value) {
    return join({u32(static_cast<std::uint32_t>(value)), u32(static_cast<std::uint32_t>(value >> 32U))});
}

bytes text_field(std::string_view text, std::size_t size) {
    bytes field(text.begin(), text.end());
    field.resize(size);
    return field;
}

bytes datagram(std::initializer_list<bytes> operations) {
    return join({{0xE9, 0x9E, 0x01, 0x00, 0x00, 0x00}, join(operations)});
}

std::string hex(const bytes& content) {
    std::string text;
    for (const std::uint8_t value : content) {
        char digits[4];
        std::snprintf(digits, sizeof digits, "%02X ", value);
        text += digits;
    }
    return text;
}

float float_at(const bytes& content, std::size_t place) {
    float value;
    std::memcpy(&value, &content.at(place + sizeof value - 1) - (sizeof value - 1), sizeof value);
    return value;
}

bytes connect_operation(std::uint8_t tag, std::uint64_t keep_alive_ns) {
    return join({{0xFF, 0x03, 0x70, 0x00, tag, 0x00, 0x00, 0x00, 0x00},
                 u64(keep_alive_ns),
                 {0x04, 0x03, 0x02, 0x01},
                 text_field("tester", 32),
                 text_field("2.0.0|2.0.0", 64)});
}

} // namespace simulator_tests
