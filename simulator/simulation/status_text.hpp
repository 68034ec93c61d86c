// What the console shows: the state of a simulation, and help on the verbs.
#pragma once

#include "simulator/simulation/simulation.hpp"

#include <string>
#include <string_view>

namespace vantu::orvanta::simulator {

// Seed and ticks, clients, devices, the faults that act now with their counts, and how often each fault has
// happened since the beginning. Lines that end in line feeds.
[[nodiscard]] std::string status_text(const simulation& target);

// All verbs, or more about one of them; a name that is no verb's is taken for none. Lines that end in line
// feeds, none beyond 80 columns and no more than 24.
[[nodiscard]] std::string verb_help_text(std::string_view verb);

} // namespace vantu::orvanta::simulator
