#include "vantu/orvanta/names.h"

#include "vantu/orvanta/communication/records.h"
#include "vantu/orvanta/error_codes.h"
#include "vantu/orvanta/log.h"

#include <cstddef>
#include <cstdint>

namespace {

constexpr const char* unknown = "unknown";

const char* name_of(vantu_orvanta_error_code value) {
    switch (value) {
    case vantu_orvanta_success:
        return "success";
    case vantu_orvanta_unexpected_error:
        return "unexpected_error";
    case vantu_orvanta_invalid_argument:
        return "invalid_argument";
    case vantu_orvanta_invalid_connection_state:
        return "invalid_connection_state";
    case vantu_orvanta_timed_out:
        return "timed_out";
    case vantu_orvanta_socket_bind_failed:
        return "socket_bind_failed";
    case vantu_orvanta_protocol_parse_failed:
        return "protocol_parse_failed";
    case vantu_orvanta_no_matching_device:
        return "no_matching_device";
    case vantu_orvanta_disconnected_from_service:
        return "disconnected_from_service";
    case vantu_orvanta_buffer_full_or_empty:
        return "buffer_full_or_empty";
    case vantu_orvanta_request_queue_empty:
        return "request_queue_empty";
    case vantu_orvanta_request_queue_full:
        return "request_queue_full";
    case vantu_orvanta_invalid_version:
        return "invalid_version";
    case vantu_orvanta_invalid_operation:
        return "invalid_operation";
    case vantu_orvanta_invalid_body:
        return "invalid_body";
    case vantu_orvanta_invalid_request_argument:
        return "invalid_request_argument";
    case vantu_orvanta_client_not_connected:
        return "client_not_connected";
    case vantu_orvanta_device_not_opened:
        return "device_not_opened";
    case vantu_orvanta_invalid_device_id:
        return "invalid_device_id";
    case vantu_orvanta_invalid_device_type:
        return "invalid_device_type";
    case vantu_orvanta_unsupported_device_model:
        return "unsupported_device_model";
    case vantu_orvanta_unparsable_device_pointer:
        return "unparsable_device_pointer";
    case vantu_orvanta_device_communication_error:
        return "device_communication_error";
    case vantu_orvanta_unknown_client_id:
        return "unknown_client_id";
    case vantu_orvanta_another_client_connected:
        return "another_client_connected";
    case vantu_orvanta_os_socket_error:
        return "os_socket_error";
    }
    return unknown;
}

const char* name_of(vantu_orvanta_event_type value) {
    switch (value) {
    case vantu_orvanta_event_none:
        return "none";
    case vantu_orvanta_event_ack:
        return "ack";
    case vantu_orvanta_event_disconnected:
        return "disconnected";
    case vantu_orvanta_event_device_added:
        return "device_added";
    case vantu_orvanta_event_device_removed:
        return "device_removed";
    case vantu_orvanta_event_device_opened:
        return "device_opened";
    case vantu_orvanta_event_device_closed:
        return "device_closed";
    case vantu_orvanta_event_orvanta3_info:
        return "orvanta3_info";
    case vantu_orvanta_event_palmetron_info:
        return "palmetron_info";
    case vantu_orvanta_event_device_block:
        return "device_block";
    case vantu_orvanta_event_cursor_state:
        return "cursor_state";
    case vantu_orvanta_event_cursor_state_b:
        return "cursor_state_b";
    case vantu_orvanta_event_palmetron_state:
        return "palmetron_state";
    case vantu_orvanta_event_orientation:
        return "orientation";
    case vantu_orvanta_event_config_save:
        return "config_save";
    case vantu_orvanta_event_config_gravity_compensation:
        return "config_gravity_compensation";
    case vantu_orvanta_event_config_torque_scaling:
        return "config_torque_scaling";
    case vantu_orvanta_event_config_handedness:
        return "config_handedness";
    case vantu_orvanta_event_status_motor_current:
        return "status_motor_current";
    case vantu_orvanta_event_status_power_supply:
        return "status_power_supply";
    case vantu_orvanta_event_service_stream_a:
        return "service_stream_a";
    case vantu_orvanta_event_service_stream_b:
        return "service_stream_b";
    case vantu_orvanta_event_table_block_128:
        return "table_block_128";
    case vantu_orvanta_event_table_block_301:
        return "table_block_301";
    case vantu_orvanta_event_error:
        return "error";
    }
    return unknown;
}

const char* name_of(vantu_orvanta_device_type value) {
    switch (value) {
    case vantu_orvanta_device_type_none:
        return "none";
    case vantu_orvanta_device_type_orvanta3:
        return "orvanta3";
    case vantu_orvanta_device_type_palmetron:
        return "palmetron";
    }
    return unknown;
}

const char* name_of(vantu_orvanta_handedness value) {
    switch (value) {
    case vantu_orvanta_handedness_none:
        return "none";
    case vantu_orvanta_handedness_right:
        return "right";
    case vantu_orvanta_handedness_left:
        return "left";
    }
    return unknown;
}

const char* name_of(vantu_orvanta_log_level value) {
    switch (value) {
    case vantu_orvanta_log_debug:
        return "debug";
    case vantu_orvanta_log_info:
        return "info";
    case vantu_orvanta_log_warning:
        return "warning";
    case vantu_orvanta_log_error:
        return "error";
    }
    return unknown;
}

// The name of a number, which may be none of the enumerators.
template <typename Enum> const char* name_of_number(std::int64_t number, Enum last) {
    return number >= 0 && number <= last ? name_of(static_cast<Enum>(number)) : unknown;
}

} // namespace

const char* vantu_orvanta_error_name(std::int32_t code) {
    return name_of_number(code, vantu_orvanta_os_socket_error);
}

const char* vantu_orvanta_event_type_name(std::uint32_t event_type) {
    return name_of_number(event_type, vantu_orvanta_event_error);
}

const char* vantu_orvanta_device_type_name(std::uint8_t device_type) {
    return name_of_number(device_type, vantu_orvanta_device_type_palmetron);
}

const char* vantu_orvanta_handedness_name(std::uint8_t handedness) {
    return name_of_number(handedness, vantu_orvanta_handedness_left);
}

const char* vantu_orvanta_log_level_name(std::uint32_t level) {
    return name_of_number(level, vantu_orvanta_log_error);
}

void vantu_orvanta_uuid_text(const std::uint8_t uuid[16], char text[VANTU_ORVANTA_UUID_TEXT_SIZE]) {
    if (uuid == nullptr || text == nullptr) {
        return;
    }
    for (std::size_t i = 0; i < 16; ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) {
            *text++ = '-';
        }
        *text++ = "0123456789abcdef"[uuid[i] >> 4U];
        *text++ = "0123456789abcdef"[uuid[i] & 0x0FU];
    }
    *text = '\0';
}
