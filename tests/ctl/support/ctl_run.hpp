// orvantactl, run to its end as a script runs it.
#pragma once

#include "ctl/report/exit_status.hpp"
#include "support/service_process.hpp"

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace orvanta_tests {

using vantu::orvanta::ctl::exit_status;

inline std::vector<std::string> ctl_command(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), ORVANTACTL_PATH);
    return arguments;
}

// Leaves the lines of JSON in a file, which check_schema.py holds to the schema.
inline void keep_json_of(const std::string& printed) {
    std::ofstream file(ORVANTACTL_JSON_LINES, std::ios::app);
    std::istringstream lines(printed);
    std::string all;
    for (std::string line; std::getline(lines, line);) {
        all += line.starts_with('{') ? line + '\n' : "";
    }
    file << all;
}

inline run_of_a_program ctl(std::vector<std::string> arguments) {
    child_process program(ctl_command(std::move(arguments)), attachment::pipes);
    run_of_a_program run = ended(program);
    keep_json_of(run.output + run.errors);
    return run;
}

// The end of a program that chose this status.
inline ending status(exit_status chosen) {
    return {static_cast<int>(chosen), 0};
}

} // namespace orvanta_tests
