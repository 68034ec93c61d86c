// Services that are wrong in one way each, and the rules that each of them breaks.
#pragma once

#include "conformance/wrong_services.hpp"

#include <string_view>
#include <vector>

namespace orvanta_tests {

struct wrong_service {
    const char* what;
    wrongs wrong;
    // The rules that fail, in the order of the table. A rule that cannot be judged for the sake of one of
    // these is stopped by it; every other rule holds.
    std::vector<std::string_view> failed;
};

// Faults of the simulator; then services that a relay makes wrong.
[[nodiscard]] std::vector<wrong_service> faulty_simulators();
[[nodiscard]] std::vector<wrong_service> tampered_services();

} // namespace orvanta_tests
