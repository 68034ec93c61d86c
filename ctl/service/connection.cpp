#include "ctl/service/connection.hpp"

#include "ctl/service/device_choice.hpp"
#include "ctl/service/traffic_recorder.hpp"

#include <algorithm>
#include <cstdio>

namespace vantu::orvanta::ctl {
namespace {

void log_to_standard_error(vantu_orvanta_log_level level, const char* message) {
    std::fprintf(stderr, "orvantactl: %s: %s\n", vantu_orvanta_log_level_name(level), message);
}

session::options options_for(const request& asked, session::callbacks told) {
    session::options wanted;
    wanted.name = "orvantactl";
    wanted.callbacks = std::move(told);
    wanted.connect_timeout = asked.timeout;
    wanted.request_timeout = asked.timeout;
    if (asked.verbose) {
        wanted.log = log_to_standard_error;
    } else {
        wanted.log = [](vantu_orvanta_log_level, const char*) {};
    }
    if (asked.recorder != nullptr) {
        wanted.traffic = [to = asked.recorder](const vantu_orvanta_traffic& datagram) { to->take(datagram); };
    }
    return wanted;
}

std::unique_ptr<session> connect(session::options wanted) {
    try {
        return std::make_unique<session>(std::move(wanted));
    } catch (const exception& refused) {
        throw failure_with_status(exit_status::no_service, refused.what(),
                                  static_cast<error_code>(refused.code()));
    }
}

} // namespace

connection::connection(const request& asked, session::callbacks told)
    : wanted_(asked.device), end_(std::chrono::steady_clock::now() + asked.timeout),
      session_(connect(options_for(asked, std::move(told)))) {
    end_when_interrupted();
}

std::chrono::nanoseconds connection::time_left() const {
    return std::max<std::chrono::nanoseconds>(end_ - std::chrono::steady_clock::now(), shortest_time);
}

void connection::restart_time(std::chrono::nanoseconds time) {
    end_ = std::chrono::steady_clock::now() + time;
}

device connection::choose() const {
    return choose_device(session_->devices(), wanted_);
}

device connection::open_chosen() {
    device chosen = choose();
    open(chosen);
    return chosen;
}

void connection::open(const device& chosen) {
    ask<void>([&](session& to, auto done, auto time) { to.open(chosen.id, std::move(done), time); });
}

device connection::look_up(std::uint32_t device_id) const {
    const std::vector<device> devices = session_->devices();
    const auto found = std::find_if(devices.begin(), devices.end(),
                                    [device_id](const device& one) { return one.id == device_id; });
    if (found == devices.end()) {
        throw failure_with_status(exit_status::lost, session_->is_connected()
                                                         ? "the device was unplugged"
                                                         : "the connection to the service is lost");
    }
    return *found;
}

} // namespace vantu::orvanta::ctl
