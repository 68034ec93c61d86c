// The words of get and set, read by the table of keys.
#pragma once

#include "ctl/settings/values.hpp"

#include <string>
#include <vector>

namespace vantu::orvanta::ctl {

// The keys in the order of the words; all when there are none. Throws failure_with_status (wrong_usage) for
// an unknown key, whose error names the keys, and for one that is given twice.
[[nodiscard]] std::vector<key> keys_in(const std::vector<std::string>& words);

// The values to set. Throws failure_with_status (wrong_usage), which names the word: no KEY=VALUE, a key
// that is unknown, cannot be set or is given twice, a value that it cannot have.
[[nodiscard]] value_set assignments_in(const std::vector<std::string>& words);

} // namespace vantu::orvanta::ctl
