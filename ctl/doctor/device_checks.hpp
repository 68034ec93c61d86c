// The checks of devices, over a connection that stands. They open devices and change nothing at them.
#pragma once

#include "ctl/doctor/finding.hpp"
#include "ctl/doctor/stream_rate.hpp"
#include "ctl/service/connection.hpp"
#include "vantu/orvanta/device.hpp"

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace vantu::orvanta::ctl {

// Failed without an Orvanta3.
[[nodiscard]] finding check_devices(const std::vector<device>& devices);

struct opening {
    finding found;
    std::vector<std::uint32_t> opened{};
};
// Opens the device that the text names (see device_choice.hpp), or each Orvanta3 when it is empty; failed
// unless all open within this time together. After a time-out no further one is tried.
[[nodiscard]] opening check_open(connection& to, const std::string& wanted, std::chrono::nanoseconds time);

// The fate of requests for the orientation of a device.
struct request_view {
    std::uint32_t device_id{0};
    std::size_t asked{0};
    std::vector<std::chrono::nanoseconds> times{}; // of those that were answered
    failure last_failure{error_code::success, ""};
};
// Asks five times, each time for a fifth of this time; a refusal or a loss ends it.
[[nodiscard]] request_view ask_for_orientation(connection& to, std::uint32_t device_id,
                                               std::chrono::nanoseconds time);
// Failed without an answer; a warning when not all came, or half of them took longer than 100 ms. Figures:
// median_ms, worst_ms.
[[nodiscard]] finding check_request(const request_view& seen);

// Records the states of an open device for this time. The connection's on_cursor is to feed the recorder.
[[nodiscard]] stream_view watch_stream(connection& to, stream_recorder& recorder, std::uint32_t device_id,
                                       std::chrono::nanoseconds time);

} // namespace vantu::orvanta::ctl
