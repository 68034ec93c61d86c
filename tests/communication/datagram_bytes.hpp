// Datagrams as plain bytes, to compare with bytes written out by hand.
#pragma once

#include "vantu/orvanta/common/byte_buffer.hpp"
#include "vantu/orvanta/communication/compose.hpp"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <vector>

namespace orvanta_tests {

using datagram_bytes = std::vector<std::uint8_t>;

inline datagram_bytes written_bytes(const vantu::orvanta::byte_buffer& buffer) {
    const auto* first = reinterpret_cast<const std::uint8_t*>(buffer.bytes);
    return {first, first + buffer.write_position};
}

// The datagram of one operation, as the code under test composes it.
template <std::uint8_t code, vantu::orvanta::communication::direction way>
datagram_bytes composed(std::uint8_t tag, const vantu::orvanta::communication::proto::body<code, way>& body) {
    vantu::orvanta::byte_buffer buffer(vantu::orvanta::constants::mode_write);
    vantu::orvanta::communication::compose_datagram<code, way>(buffer, tag, body);
    return written_bytes(buffer);
}

// first, first + 1, ... count bytes, wrapping at 256.
inline datagram_bytes rising_bytes(std::size_t count, std::uint8_t first) {
    datagram_bytes bytes;
    for (std::size_t i = 0; i < count; ++i) {
        bytes.push_back(static_cast<std::uint8_t>(first + i));
    }
    return bytes;
}

template <std::size_t N> void fill_rising(std::uint8_t (&field)[N], std::uint8_t first) {
    for (std::size_t i = 0; i < N; ++i) {
        field[i] = static_cast<std::uint8_t>(first + i);
    }
}

inline datagram_bytes joined(std::initializer_list<datagram_bytes> parts) {
    datagram_bytes bytes;
    for (const datagram_bytes& part : parts) {
        bytes.insert(bytes.end(), part.begin(), part.end());
    }
    return bytes;
}

} // namespace orvanta_tests
