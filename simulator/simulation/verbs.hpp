// What can be told to a running simulation, as lines of text: the same verbs serve the console, scripts on
// standard input, scenarios and the simulator's library.
#pragma once

#include "simulator/simulation/simulation.hpp"

#include <string>
#include <string_view>

namespace vantu::orvanta::simulator {

struct verb_result {
    bool good{true};  // false: text is one line that says what is wrong and what would be right
    bool quit{false}; // the simulation is to end
    std::string text; // what to show; empty, or lines that end in line feeds
};

// Does what a line says, as in "plug orvanta3", "unplug 2", "drop 0.3", "set 1 handedness left", "heal",
// "status", "help", "quit". An empty line, and one that begins with '#', does nothing.
[[nodiscard]] verb_result run_verb(simulation& target, std::string_view line);

// The same without doing it: empty when the line is good, else what is wrong with it.
[[nodiscard]] std::string check_verb(std::string_view line);

} // namespace vantu::orvanta::simulator
