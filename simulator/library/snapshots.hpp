// The state of a simulation as the data of the public header.
#pragma once

#include "simulator/simulation/simulation.hpp"
#include "vantu/orvanta/simulator.hpp"

#include <cstdint>
#include <string_view>
#include <vector>

namespace vantu::orvanta::simulator {

[[nodiscard]] std::vector<service_simulator::client> clients_of(const simulation& simulated);
[[nodiscard]] std::vector<service_simulator::device> devices_of(const simulation& simulated);
[[nodiscard]] std::vector<service_simulator::rule> rules_of(const simulation& simulated);

struct operation_name {
    communication::direction way;
    std::uint8_t code;
};

// Throws std::invalid_argument, with the nearest name, for an operation that does not travel that way.
[[nodiscard]] operation_name operation_named(service_simulator::direction way, std::string_view text);

} // namespace vantu::orvanta::simulator
