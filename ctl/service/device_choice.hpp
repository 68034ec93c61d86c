// Which device is meant: an id, a short id, or a part of a uuid.
#pragma once

#include "vantu/orvanta/device.hpp"

#include <string>
#include <vector>

namespace vantu::orvanta::ctl {

// The device that the text names: its id in decimal, its short id in hexadecimal, or a part of its uuid of at
// least four characters, in any case. An empty text names the only Orvanta3. A text that names several in
// these ways names the one whose id it is. Throws failure_with_status (no_device), which lists the devices
// that were in question.
device choose_device(const std::vector<device>& devices, const std::string& text);

// Whether the text means this device in one of these ways; an empty one means each Orvanta3.
bool is_meant(const device& one, const std::string& text);

} // namespace vantu::orvanta::ctl
