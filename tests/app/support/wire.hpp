// The operations of a service that the tool's tests share, as hexadecimal text.
#pragma once

#include "support/bytes.hpp"

#include <cstdint>
#include <string>

namespace orvanta_tests {

// A device is announced: id, type and short id; its UUID is 16 times one byte.
[[nodiscard]] inline std::string device_added(unsigned id, unsigned type, unsigned short_id,
                                              unsigned uuid_byte) {
    return " FF 10 1800 00 " + hex(join({u32(id), u16(static_cast<std::uint16_t>(type)),
                                         u16(static_cast<std::uint16_t>(short_id)),
                                         filled(16, static_cast<std::uint8_t>(uuid_byte))}));
}

// The service accepts the client under the id 77.
inline constexpr const char* accepted = " FF 04 0800 00 4D00000000000000";

// The service says goodbye, or confirms one.
inline constexpr const char* disconnected = " FF 06 0000 00";

} // namespace orvanta_tests
