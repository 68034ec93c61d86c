// The time of day, for people.
#pragma once

#include <string>

namespace vantu::orvanta::ctl {

// "2026-03-01 12:30:05 UTC".
std::string clock_text();

} // namespace vantu::orvanta::ctl
