// Bytes of the service in a byte buffer, as a receive leaves them there.
#pragma once

#include "support/bytes.hpp"
#include "vantu/orvanta/common/byte_buffer.hpp"

#include <cstring>
#include <gtest/gtest.h>

namespace orvanta_tests {

inline void put(vantu::orvanta::byte_buffer& buffer, const bytes& received) {
    ASSERT_LE(received.size(), buffer.write_len());
    std::memcpy(buffer.unwritten(), received.data(), received.size());
    buffer.skip_write(received.size());
}

} // namespace orvanta_tests
