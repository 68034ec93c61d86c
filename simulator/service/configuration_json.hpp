// The configuration of a device as JSON, in files of saved configurations and in scenarios.
#pragma once

#include "shared/located_json.hpp"
#include "simulator/service/device.hpp"

#include <array>
#include <string>
#include <string_view>

namespace vantu::orvanta::simulator {

inline constexpr std::array<std::string_view, 3> configuration_members{"gravity_compensation",
                                                                       "torque_scaling", "handedness"};

// Takes the members of an object over into the settings; those that it lacks stay as they are. Throws
// located_error; `place` names the object.
void read_configuration(const located_value& value, const std::string& place, configuration& settings);

// The configuration as such an object on one line.
[[nodiscard]] std::string configuration_json(const configuration& settings);

} // namespace vantu::orvanta::simulator
