#include "ctl/report/exit_status.hpp"

namespace vantu::orvanta::ctl {

const char* name_of(exit_status status) noexcept {
    switch (status) {
    case exit_status::done:
        return "done";
    case exit_status::refused:
        return "refused";
    case exit_status::wrong_usage:
        return "wrong_usage";
    case exit_status::no_service:
        return "no_service";
    case exit_status::no_device:
        return "no_device";
    case exit_status::timed_out:
        return "timed_out";
    case exit_status::lost:
        return "lost";
    case exit_status::interrupted:
        return "interrupted";
    }
    return "unknown";
}

exit_status status_of(error_code code) noexcept {
    switch (code) {
    case error_code::timed_out:
        return exit_status::timed_out;
    case error_code::disconnected_from_service:
    case error_code::invalid_connection_state:
    // The service was started anew.
    case error_code::client_not_connected:
    case error_code::unknown_client_id:
    // Each command opens its device first, so it was unplugged since.
    case error_code::invalid_device_id:
    case error_code::device_not_opened:
        return exit_status::lost;
    default:
        return exit_status::refused;
    }
}

std::string text_of(const failure& why) {
    switch (why.code) {
    case error_code::client_not_connected:
    case error_code::unknown_client_id:
        return "the service was started anew meanwhile";
    case error_code::invalid_device_id:
    case error_code::device_not_opened:
        return "the device was unplugged";
    default:
        return why.message;
    }
}

} // namespace vantu::orvanta::ctl
