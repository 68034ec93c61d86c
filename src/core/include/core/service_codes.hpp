// How the statuses of the service become client error codes.
#pragma once

#include "vantu/orvanta/error_codes.h"

#include <cstdint>

namespace vantu::orvanta {

// The service statuses that are client error codes under their own number.
[[nodiscard]] constexpr bool is_own_client_code(std::int32_t service_status) {
    switch (service_status) {
    case 0:
    case 160:
    case 161:
    case 162:
    case 163:
    case 176:
    case 177:
    case 178:
    case 192:
    case 193:
    case 194:
    case 195:
    case 208:
    case 209:
        return true;
    default:
        return false;
    }
}

// The client error code for a service status. The three states of buffers and queues have small codes
// of the client's own; a status without a code is 255.
[[nodiscard]] constexpr std::uint32_t client_code_from_service_status(std::uint8_t status) {
    switch (status) {
    case 179:
        return vantu_orvanta_buffer_full_or_empty;
    case 180:
        return vantu_orvanta_request_queue_empty;
    case 181:
        return vantu_orvanta_request_queue_full;
    default:
        return is_own_client_code(status) ? status : 255;
    }
}

} // namespace vantu::orvanta
