// Byte lists for tests.
#include "support/bytes.hpp"

#include <stdexcept>

namespace orvanta_tests {
namespace {

constexpr std::string_view digits = "0123456789ABCDEF";

bytes little_endian(std::uint64_t value, std::size_t width) {
    bytes result;
    for (std::size_t i = 0; i < width; ++i) {
        result.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
    }
    return result;
}

} // namespace

bytes join(std::initializer_list<bytes> parts) {
    bytes result;
    for (const bytes& part : parts) {
        result.insert(result.end(), part.begin(), part.end());
    }
    return result;
}

bytes u16(std::uint16_t value) {
    return little_endian(value, 2);
}
bytes u32(std::uint32_t value) {
    return little_endian(value, 4);
}
bytes u64(std::uint64_t value) {
    return little_endian(value, 8);
}

bytes counting(std::uint8_t first, std::size_t count) {
    bytes result;
    for (std::size_t i = 0; i < count; ++i) {
        result.push_back(static_cast<std::uint8_t>(first + i));
    }
    return result;
}

bytes filled(std::size_t count, std::uint8_t value) {
    return bytes(count, value);
}

bytes text_field(std::string_view text, std::size_t size) {
    bytes result(text.begin(), text.end());
    result.resize(size, 0);
    return result;
}

bytes op(std::uint8_t code, std::uint8_t tag, const bytes& body) {
    return op_of_length(code, tag, static_cast<std::uint16_t>(body.size()), body);
}

bytes op_of_length(std::uint8_t code, std::uint8_t tag, std::uint16_t length, const bytes& body) {
    return join({{0xFF, code}, u16(length), {tag}, body});
}

bytes datagram(std::initializer_list<bytes> operations) {
    bytes result{0xE9, 0x9E, 0x01, 0x00, 0x00, 0x00};
    for (const bytes& operation : operations) {
        result.insert(result.end(), operation.begin(), operation.end());
    }
    return result;
}

bytes datagram(std::string_view operations) {
    return datagram({from_hex(operations)});
}

std::string hex(const bytes& of) {
    std::string text;
    for (const std::uint8_t byte : of) {
        text += text.empty() ? "" : " ";
        text += digits[byte >> 4];
        text += digits[byte & 15];
    }
    return text;
}

bytes from_hex(std::string_view text) {
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

} // namespace orvanta_tests
