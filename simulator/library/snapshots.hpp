// The state of a simulation as the data of the public header.
#pragma once

#include "simulator/simulation/simulation.hpp"
#include "vantu/orvanta/simulator.hpp"

#include <vector>

namespace vantu::orvanta::simulator {

[[nodiscard]] std::vector<service_simulator::client> clients_of(const simulation& simulated);
[[nodiscard]] std::vector<service_simulator::device> devices_of(const simulation& simulated);
[[nodiscard]] std::vector<service_simulator::rule> rules_of(const simulation& simulated);

} // namespace vantu::orvanta::simulator
