// Datagrams written out by hand, as hexadecimal text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace orvanta_tests {

using bytes = std::vector<std::uint8_t>;
using datagrams = std::vector<bytes>;

// The bytes of a text of hexadecimal digits; blanks are for the reader's eye.
[[nodiscard]] inline bytes from_hex(std::string_view text) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    bytes result;
    bool second = false;
    for (const char character : text) {
        if (character == ' ') {
            continue;
        }
        const std::size_t value = digits.find(character);
        if (value == std::string_view::npos) {
            throw std::invalid_argument("not a hexadecimal digit in: " + std::string(text));
        }
        if (second) {
            result.back() = static_cast<std::uint8_t>(std::size_t{result.back()} * 16 + value);
        } else {
            result.push_back(static_cast<std::uint8_t>(value));
        }
        second = !second;
    }
    if (second) {
        throw std::invalid_argument("half a byte in: " + std::string(text));
    }
    return result;
}

// A datagram of operations that are given as hexadecimal text, behind its header.
[[nodiscard]] inline bytes datagram(std::string_view operations) {
    return from_hex("E99E 0100 0000" + std::string(operations));
}

[[nodiscard]] inline std::string two_digits(unsigned value) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    return {digits[value / 16 % 16], digits[value % 16]};
}

// A device is announced: id below 256, type and short id; its UUID is 16 times one byte.
[[nodiscard]] inline std::string device_added(unsigned id, unsigned type, unsigned short_id,
                                              unsigned uuid_byte) {
    std::string operation = " FF 10 1800 00 " + two_digits(id) + "000000 " + two_digits(type) + "00 " +
                            two_digits(short_id) + two_digits(short_id / 256) + " ";
    for (int i = 0; i < 16; ++i) {
        operation += two_digits(uuid_byte);
    }
    return operation;
}

// The service accepts the client under the id 77.
inline constexpr const char* accepted = " FF 04 0800 00 4D00000000000000";

// The service says goodbye, or confirms one.
inline constexpr const char* disconnected = " FF 06 0000 00";

} // namespace orvanta_tests
