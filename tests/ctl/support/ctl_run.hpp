// orvantactl, run to its end as a script runs it.
#pragma once

#include "ctl/report/exit_status.hpp"
#include "support/service_process.hpp"

#include <string>
#include <vector>

namespace orvanta_tests {

using vantu::orvanta::ctl::exit_status;

inline std::vector<std::string> ctl_command(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), ORVANTACTL_PATH);
    return arguments;
}

inline run_of_a_program ctl(std::vector<std::string> arguments) {
    child_process program(ctl_command(std::move(arguments)), attachment::pipes);
    return ended(program);
}

// The end of a program that chose this status.
inline ending status(exit_status chosen) {
    return {static_cast<int>(chosen), 0};
}

} // namespace orvanta_tests
