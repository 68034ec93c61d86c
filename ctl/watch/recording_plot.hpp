// The picture of a recording: position, velocity and motor current over time.
#pragma once

#include "ctl/watch/plot.hpp"
#include "ctl/watch/recording.hpp"

#include <chrono>
#include <string>

namespace vantu::orvanta::ctl {

plot plot_of(const recording& taken, const live_view& at_end, std::string title,
             std::chrono::system_clock::time_point began);

// "2026-03-01 12:30:05 UTC".
std::string date_text(std::chrono::system_clock::time_point when);

} // namespace vantu::orvanta::ctl
