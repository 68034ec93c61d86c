// The texts of the client's error codes.
#include "core/service_codes.hpp"
#include "vantu/orvanta/communication/service_status.hpp"
#include "vantu/orvanta/orvanta.h"

namespace {

const char* service_text(std::int32_t status) {
    return vantu::orvanta::service_status_message(
        static_cast<std::int8_t>(static_cast<std::uint8_t>(status)));
}

constexpr std::int32_t unknown_status = 0xFF;

} // namespace

const char* vantu_orvanta_error_message(std::int32_t code) {
    switch (code) {
    case vantu_orvanta_unexpected_error:
        return "an unexpected error occurred";
    case vantu_orvanta_invalid_argument:
        return "an invalid argument was provided";
    case vantu_orvanta_invalid_connection_state:
        return "invalid connection state";
    case vantu_orvanta_timed_out:
        return "operation timed out";
    case vantu_orvanta_socket_bind_failed:
        return "unable to bind the client socket";
    case vantu_orvanta_protocol_parse_failed:
        return "unable to parse the service protocol";
    case vantu_orvanta_no_matching_device:
        return "no device matches given type or id";
    case vantu_orvanta_disconnected_from_service:
        return "disconnected from the service";
    case vantu_orvanta_os_socket_error:
        return "Socket error from the operating system";
    case vantu_orvanta_buffer_full_or_empty:
    case vantu_orvanta_request_queue_empty:
    case vantu_orvanta_request_queue_full:
        // The three service statuses that travel under small codes of the client's own.
        return service_text(code - vantu_orvanta_buffer_full_or_empty + 0xB3);
    default:
        return service_text(vantu::orvanta::is_own_client_code(code) ? code : unknown_status);
    }
}
