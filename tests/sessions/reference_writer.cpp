#include "sessions/reference_writer.hpp"

namespace orvanta_tests {
namespace {

void append(packet& bytes, field one) {
    for (int i = 0; i < one.width; ++i) {
        bytes.push_back(static_cast<std::byte>(one.value >> (8 * i) & 0xFF));
    }
}

void append_padded(packet& bytes, std::string_view text, std::size_t width) {
    text = text.substr(0, width - 1);
    for (std::size_t i = 0; i < width; ++i) {
        bytes.push_back(static_cast<std::byte>(i < text.size() ? text[i] : '\0'));
    }
}

packet begun(std::uint8_t code, std::uint64_t length, std::uint8_t tag) {
    packet bytes;
    for (const field one : {field{0x9EE9, 2}, {1, 2}, {0, 2}, {0xFF, 1}, {code, 1}, {length, 2}, {tag, 1}}) {
        append(bytes, one);
    }
    return bytes;
}

} // namespace

packet reference_datagram(std::uint8_t code, std::uint8_t tag, std::initializer_list<field> body) {
    std::uint64_t length = 0;
    for (const field one : body) {
        length += static_cast<std::uint64_t>(one.width);
    }
    packet bytes = begun(code, length, tag);
    for (const field one : body) {
        append(bytes, one);
    }
    return bytes;
}

packet reference_connect(const reference_introduction& client) {
    packet bytes = begun(3, 112, 0);
    for (const field one :
         {field{client.value_a, 2}, {client.value_b, 2}, {client.keep_alive_ns, 8}, {client.process_id, 4}}) {
        append(bytes, one);
    }
    append_padded(bytes, client.name, 32);
    append_padded(bytes, client.version_text, 64);
    return bytes;
}

} // namespace orvanta_tests
