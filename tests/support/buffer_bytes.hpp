// Bytes in a byte buffer: those that the code under test has composed there, and those that a receive leaves
// there.
#pragma once

#include "support/bytes.hpp"
#include "vantu/orvanta/common/byte_buffer.hpp"
#include "vantu/orvanta/communication/compose.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>

namespace orvanta_tests {

inline bytes written_bytes(const vantu::orvanta::byte_buffer& buffer) {
    const auto* first = reinterpret_cast<const std::uint8_t*>(buffer.bytes);
    return {first, first + buffer.write_position};
}

inline void put(vantu::orvanta::byte_buffer& buffer, const bytes& received) {
    ASSERT_LE(received.size(), buffer.write_len());
    std::copy(received.begin(), received.end(), reinterpret_cast<std::uint8_t*>(buffer.unwritten()));
    buffer.skip_write(received.size());
}

// The datagram of one operation.
template <std::uint8_t code, vantu::orvanta::communication::direction way>
bytes composed(std::uint8_t tag, const vantu::orvanta::communication::proto::body<code, way>& body) {
    vantu::orvanta::byte_buffer buffer(vantu::orvanta::constants::mode_write);
    vantu::orvanta::communication::compose_datagram<code, way>(buffer, tag, body);
    return written_bytes(buffer);
}

template <std::size_t N> void fill_rising(std::uint8_t (&field)[N], std::uint8_t first) {
    for (std::size_t i = 0; i < N; ++i) {
        field[i] = static_cast<std::uint8_t>(first + i);
    }
}

} // namespace orvanta_tests
