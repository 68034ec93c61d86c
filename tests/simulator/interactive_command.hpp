// The simulator with its console, as a command.
#pragma once

#include <string>
#include <vector>

namespace simulator_tests {

// The program with a console on a port that the system picks; the options follow.
[[nodiscard]] inline std::vector<std::string> interactive_command(const std::vector<std::string>& options) {
    std::vector<std::string> whole{SIMULATOR_PROGRAM, "--port", "0", "--interactive"};
    whole.insert(whole.end(), options.begin(), options.end());
    return whole;
}

} // namespace simulator_tests
