// The service's status codes, one byte each, and their texts.
#pragma once

#include <cstdint>

namespace vantu::orvanta {

enum class service_status : std::uint8_t {
    nil = 0,
    invalid_version = 0xA0,
    invalid_operation = 0xA1,
    invalid_body = 0xA2,
    invalid_argument = 0xA3,
    client_not_connected = 0xB0,
    device_not_opened = 0xB1,
    another_client_connected = 0xB2,
    buffer_full_or_empty = 0xB3,
    request_queue_empty = 0xB4,
    request_queue_full = 0xB5,
    invalid_device_id = 0xC0,
    invalid_device_type = 0xC1,
    unsupported_device_model = 0xC2,
    unparsable_device_pointer = 0xC3,
    device_communication_error = 0xD0,
    unknown_client_id = 0xD1,
    unknown = 0xFF,
};

// The text of a status code, given as a signed byte (-1 is 0xFF): a literal, never null. "undefined"
// for a code without a text.
[[nodiscard]] const char* service_status_message(std::int8_t code) noexcept;

} // namespace vantu::orvanta
