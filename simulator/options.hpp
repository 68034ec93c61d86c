// The simulator's command line.
#pragma once

#include "simulator/announcements.hpp"

#include <cstddef>
#include <cstdint>
#include <string>

namespace vantu::orvanta::simulator {

struct options {
    std::string port{"54320"};
    std::size_t orvanta3_count{1};
    std::size_t palmetron_count{1};
    announce_order announce{announce_order::before};
    bool single_client{false};
    double rate_hz{100};
    std::string state_path; // empty: configurations are kept nowhere
    bool verbose{false};
};

enum class parse_verdict : std::uint8_t {
    run,   // the options say what to simulate
    show,  // text is what was asked for: the help or the version
    wrong, // text is one line that says what is wrong
};

struct parse_outcome {
    parse_verdict verdict{parse_verdict::run};
    options chosen;
    std::string text;
};

// Never prints and never ends the program.
[[nodiscard]] parse_outcome parse_options(int argument_count, const char* const* arguments);

} // namespace vantu::orvanta::simulator
