// The simulator's command line, and the help beyond the list of options.
#pragma once

#include "vantu/orvanta/simulator.hpp"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantu::orvanta::simulator {

struct options {
    service_simulator::settings simulated; // without its functions
    std::string trace_path;                // "-": standard output; empty: no trace
    std::string control_path;              // empty: no control socket
    std::vector<std::string> expected;     // conditions that are to hold at the end
    bool json{false};
    bool interactive{false};
    bool verbose{false};
};

enum class parse_verdict : std::uint8_t {
    run,   // the options say what to simulate
    show,  // text is what was asked for: the help or the version
    wrong, // text is one line, without control characters, that says what is wrong
};

struct parse_outcome {
    parse_verdict verdict{parse_verdict::run};
    options chosen;
    std::string text;
};

// Never prints and never ends the program. Throws std::runtime_error with one line where the shipped
// scenarios are asked for and not there.
[[nodiscard]] parse_outcome parse_options(int argument_count, const char* const* arguments);

// The options with what their scenario says to the program in the place of what they leave out: trace and
// verbose. And with the program's port where neither says one. Throws as read_scenario.
[[nodiscard]] options with_scenario(options chosen);

inline constexpr std::array<std::string_view, 3> help_topics{"faults", "scenario", "console"};

// The help on a topic, a fault or a verb, for a screen of 80 columns and 24 lines; empty where there is none
// of that name.
[[nodiscard]] std::optional<std::string> help_on(std::string_view topic);

} // namespace vantu::orvanta::simulator
