#include "failures.hpp"

#include "vantu/orvanta/orvanta.h"

namespace vantu::orvanta {
namespace {

std::string_view remedy_of(std::int32_t code) {
    switch (static_cast<error_code>(code)) {
    case error_code::device_not_opened:
        return "open it first";
    case error_code::request_queue_full:
        return "255 requests are waiting for their answers";
    case error_code::invalid_device_id:
        return "it may have been unplugged; see session::devices";
    case error_code::client_not_connected:
    case error_code::unknown_client_id:
        return "the service was started anew; connect again";
    default:
        return {};
    }
}

std::string connect_remedy(std::int32_t code, const std::string& service_port) {
    switch (static_cast<error_code>(code)) {
    case error_code::timed_out:
    case error_code::socket_bind_failed:
        return service_port.empty() ? "no service answers on port 54320, or the local ports 54321 to 54336 "
                                      "are all taken; start "
                                      "the device service, or orvanta-simulator where there is no device"
                                    : "no service answers on port " + service_port;
    case error_code::another_client_connected:
        return "end the other program that is connected to the service";
    case error_code::buffer_full_or_empty:
        return "end one of the programs that are connected to the service";
    case error_code::protocol_parse_failed:
        return "what answers there is no device service, or one of another version";
    default:
        return {};
    }
}

std::string sentence(std::string_view what, std::int32_t code, std::string_view remedy) {
    std::string text(what);
    text += ": ";
    text += vantu_orvanta_error_message(code);
    if (!remedy.empty()) {
        text += ": ";
        text += remedy;
    }
    return text;
}

} // namespace

failure failure_of(std::int32_t code, std::string_view what) {
    const std::int32_t told = code == vantu_orvanta_success ? vantu_orvanta_unexpected_error : code;
    return {static_cast<error_code>(told), sentence(what, told, remedy_of(told))};
}

failure loss_failure(std::string_view what, std::string_view how) {
    return {error_code::disconnected_from_service,
            sentence(what, vantu_orvanta_disconnected_from_service, how)};
}

failure connect_failure(std::int32_t code, const std::string& service_port) {
    return {static_cast<error_code>(code), sentence("connect", code, connect_remedy(code, service_port))};
}

failure called_from_a_callback(std::string_view what) {
    return {error_code::invalid_argument,
            std::string(what) + ": called from a callback, on whose thread no answer can come; use the form "
                                "with a handler"};
}

void throw_failure(const failure& why) {
    throw exception::with_message(static_cast<std::uint32_t>(why.code), why.message);
}

} // namespace vantu::orvanta
