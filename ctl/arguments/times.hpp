// Times as typed: "500ms", "2s", "1.5s", "10m"; a number alone means seconds.
#pragma once

#include <chrono>
#include <string_view>

namespace vantu::orvanta::ctl {

// From a millisecond to a day. Throws failure_with_status (wrong_usage) that names the option.
std::chrono::nanoseconds time_of(std::string_view option, std::string_view text);

} // namespace vantu::orvanta::ctl
