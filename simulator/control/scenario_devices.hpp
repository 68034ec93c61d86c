// The devices of a scenario: types, identities, initial configurations.
#pragma once

#include "simulator/control/located_json.hpp"
#include "simulator/service/device.hpp"

#include <vector>

namespace vantu::orvanta::simulator {

// Reads the array of devices. Throws located_error. The devices stand by rising id; no two share an id, a
// short id or a uuid.
[[nodiscard]] std::vector<device> read_scenario_devices(const located_value& list);

} // namespace vantu::orvanta::simulator
