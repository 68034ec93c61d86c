// Random rules of faults, as text.
#pragma once

#include "sessions/chance.hpp"

#include <string>
#include <utility>
#include <vector>

namespace session_tests {

// A fault's name and what stands behind it, as in {"truncate", "17@op=66,p=0.5"}.
using fault_text = std::pair<std::string, std::string>;

// None to four.
[[nodiscard]] std::vector<fault_text> random_faults(chance& choose);

} // namespace session_tests
