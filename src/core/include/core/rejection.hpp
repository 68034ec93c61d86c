// Why bytes of the service were not understood. The core logs nothing: it hands the reason to its caller,
// which logs it when it holds no lock.
#pragma once

#include <cstdint>

namespace vantu::orvanta {

enum class reject_reason : std::uint8_t {
    none,
    header_length,       // fewer bytes than a header
    header_magic,        // the header's magic differs
    header_version,      // the header's version differs
    operation_length,    // no operation follows the header
    operation_magic,     // the operation's magic differs
    handshake_operation, // an operation that no handshake has
};

struct rejection {
    reject_reason reason{reject_reason::none};
    std::uint8_t op_code{0}; // of a handshake_operation
};

} // namespace vantu::orvanta
