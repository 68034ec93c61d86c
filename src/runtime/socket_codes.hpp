// How the statuses of the transport become client error codes.
#pragma once

#include "network/socket.hpp"
#include "vantu/orvanta/error_codes.h"

#include <cstdint>

namespace vantu::orvanta {

// The client error code for a status, taken as an unsigned byte. A send that would block is reported
// as the system's error, an error of the system (already logged) as an unexpected one: on purpose.
[[nodiscard]] constexpr std::int32_t client_code_from_socket_status(std::uint8_t status) {
    switch (status) {
    case 0:
        return 0;
    case 16:
        return 4;
    case 17:
        return 5;
    case 18:
        return 254;
    case 19:
        return 8;
    case 20:
        return 178;
    case 21:
        return 9;
    case 22:
        return 6;
    case 26:
        return 10;
    case 27:
        return 11;
    case 28:
        return 209;
    case 29:
        return 176;
    case 30:
        return 192;
    case 31:
        return 177;
    case 254:
        return 1;
    default:
        return 255;
    }
}

[[nodiscard]] constexpr std::int32_t client_code_from_socket_status(socket_status status) {
    return client_code_from_socket_status(static_cast<std::uint8_t>(status));
}

static_assert(client_code_from_socket_status(socket_status::ok) == vantu_orvanta_success);
static_assert(client_code_from_socket_status(socket_status::os_error) == vantu_orvanta_unexpected_error);
static_assert(client_code_from_socket_status(socket_status::timeout) == vantu_orvanta_timed_out);
static_assert(client_code_from_socket_status(socket_status::unavailable) == vantu_orvanta_socket_bind_failed);
static_assert(client_code_from_socket_status(socket_status::would_block) == vantu_orvanta_os_socket_error);
static_assert(client_code_from_socket_status(socket_status::connection_reset) ==
              vantu_orvanta_disconnected_from_service);

} // namespace vantu::orvanta
