#include "vantu/orvanta/communication/service_status.hpp"

namespace vantu::orvanta {

const char* service_status_message(std::int8_t code) noexcept {
    switch (static_cast<service_status>(static_cast<std::uint8_t>(code))) {
    case service_status::nil:
        return "nil";
    case service_status::invalid_version:
        return "invalid version";
    case service_status::invalid_operation:
        return "invalid operation";
    case service_status::invalid_body:
        return "invalid body";
    case service_status::invalid_argument:
        return "invalid argument";
    case service_status::client_not_connected:
        return "client is not connected";
    case service_status::device_not_opened:
        return "device was not opened";
    case service_status::another_client_connected:
        return "another client is already connected";
    case service_status::buffer_full_or_empty:
        return "an internal buffer is either full or empty";
    case service_status::request_queue_empty:
        return "an internal request queue is empty";
    case service_status::request_queue_full:
        return "an internal request queue is full";
    case service_status::invalid_device_id:
        return "invalid device identifier";
    case service_status::invalid_device_type:
        return "invalid device type";
    case service_status::unsupported_device_model:
        return "service does not support device model";
    case service_status::unparsable_device_pointer:
        return "service cannot parse the device pointer";
    case service_status::device_communication_error:
        return "communication error with device";
    case service_status::unknown_client_id:
        return "client id (cid) doesn't exist";
    case service_status::unknown:
        return "unknown";
    }
    return "undefined";
}

} // namespace vantu::orvanta
