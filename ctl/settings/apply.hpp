// Carries out changes of a device's configuration: each is confirmed, and a failure says exactly what was
// done.
#pragma once

#include "ctl/service/connection.hpp"
#include "ctl/settings/changes.hpp"

#include <cstdint>
#include <vector>

namespace vantu::orvanta::ctl {

// After a failure: leave what was set before it, or set it back.
enum class after_failure : std::uint8_t { leave, put_back };

// The values in force of the parts to which the wanted keys belong: also of the other key of a part, which a
// set keeps. Asks for each part once.
[[nodiscard]] value_set read_parts_of(connection& to, std::uint32_t device_id, const value_set& wanted);

// Sets what the changes change, one request for each part, and compares each answer with what was asked for.
// in_force is what read_parts_of has read. With put_back no request takes more than half of the time that is
// left, so that there is time to set back. Throws failure_with_status, whose text ends with what was done.
void carry_out(connection& to, std::uint32_t device_id, const value_set& in_force,
               const std::vector<change>& changes, after_failure then);

// Saves, reads the parts of the changes again and compares them with what must be in force. The handedness
// cannot be read again: the service's answer has confirmed it. Throws as carry_out does.
void save_and_check(connection& to, std::uint32_t device_id, const value_set& in_force,
                    const std::vector<change>& changes);

} // namespace vantu::orvanta::ctl
