// The settings of a simulator, checked and read from their files, with the seed chosen.
#pragma once

#include "simulator/control/scenario.hpp"
#include "simulator/service/saved_state.hpp"
#include "simulator/simulation/simulation.hpp"
#include "vantu/orvanta/simulator.hpp"

#include <memory>
#include <vector>

namespace vantu::orvanta::simulator {

struct prepared_settings {
    service_simulator::settings chosen; // with those of the scenario
    simulation_settings simulated;
    std::vector<fault_rule> faults;
    scenario script;                    // without its devices, which are those of the simulated
    std::unique_ptr<saved_state> state; // of the simulated; null where configurations are kept in no file
};

// Throws as the constructor of service_simulator does, but for the port.
[[nodiscard]] prepared_settings prepare(const service_simulator::settings& wanted);

} // namespace vantu::orvanta::simulator
