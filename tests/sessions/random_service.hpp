// A service for a random session: its settings, its faults, and what happens to it on the way.
#pragma once

#include "sessions/chance.hpp"
#include "simulator/simulation/simulation.hpp"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace orvanta_tests {

// A fault's name and its arguments, as in {"truncate", "17@op=66,p=0.5"}.
using fault_text = std::pair<std::string, std::string>;

// None to four. A session draws them first.
[[nodiscard]] std::vector<fault_text> random_faults(chance& choose);
[[nodiscard]] vantu::orvanta::simulator::simulation_settings random_settings(chance& choose);

void add_faults(vantu::orvanta::simulator::simulation& service, const std::vector<fault_text>& faults);

// A device comes or goes, the service restarts or says goodbye, or nothing happens.
void happen_to(vantu::orvanta::simulator::simulation& service, chance& choose);

// The faults of a session, as the verbs that add them.
[[nodiscard]] std::string faults_of_session(std::uint64_t seed);

} // namespace orvanta_tests
