// A sample as one line of text, CSV or JSON. Each line ends with a newline. What is told beside the cursor
// stands in the first line after it came.
#pragma once

#include "ctl/watch/observation.hpp"

#include <string>

namespace vantu::orvanta::ctl {

std::string line_of(const observation& one);

// The names of the columns with their units.
std::string csv_header();
// Empty cells where there is no news.
std::string csv_row(const observation& one);

// {"time", "number", "stream", "position", "velocity"}, and where there is news "orientation",
// "motor-current", "power-supply". What is no finite number is null.
std::string json_row(const observation& one);

} // namespace vantu::orvanta::ctl
