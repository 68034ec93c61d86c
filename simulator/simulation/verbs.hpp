// The verbs, lines of text that tell a running simulation what to do: the same serve the console, scripts on
// standard input, scenarios and the simulator's library. And the texts that the console shows.
#pragma once

#include "simulator/simulation/simulation.hpp"

#include <string>
#include <string_view>

namespace vantu::orvanta::simulator {

struct verb_result {
    bool good{true};  // false: text is one line, without control characters, that says what is
                      // wrong and what would be right
    bool quit{false}; // the simulation is to end
    std::string text; // the output; empty, or lines that end in line feeds
};

// The text of the verb expect where its condition does not hold: "expected clients = 2; it is 0".
inline constexpr std::string_view unmet_begin = "expected ";

// Does what a line says, as in "plug orvanta3", "unplug 2", "drop 0.3", "set 1 handedness left", "heal",
// "status", "help", "quit". An empty line, and one that begins with '#', does nothing.
[[nodiscard]] verb_result run_verb(simulation& target, std::string_view line);

// The same without doing it: empty when the line is good, else what is wrong with it.
[[nodiscard]] std::string check_verb(std::string_view line);

// Seed and ticks, clients, devices, the faults that act now with their counts, and how often each fault has
// happened since the beginning. Lines that end in line feeds.
[[nodiscard]] std::string status_text(const simulation& target);

// "127.0.0.1:54321".
[[nodiscard]] std::string address_text(const peer& of);

// Tells what a fault did to a datagram, as one line: "drop 0.3: lost device_opened tag=1 device_id=1 to
// client 127.0.0.1:54321".
[[nodiscard]] std::string note_text(const fault_note& note);

// All verbs, or more about one of them or a fault; another name is taken for none. Lines that end in line
// feeds, none beyond 80 columns and no more than 24.
[[nodiscard]] std::string verb_help_text(std::string_view verb);

} // namespace vantu::orvanta::simulator
