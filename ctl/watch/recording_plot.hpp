// The picture of a recording: position, velocity and motor current over time.
#pragma once

#include "ctl/watch/plot.hpp"
#include "ctl/watch/recording.hpp"

#include <string>

namespace vantu::orvanta::ctl {

plot plot_of(const recording& taken, const live_view& at_end, std::string title, const std::string& began);

} // namespace vantu::orvanta::ctl
