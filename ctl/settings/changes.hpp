// What setting some keys would change.
#pragma once

#include "ctl/settings/values.hpp"

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

namespace vantu::orvanta::ctl {

struct change {
    key which;
    value before;
    value after;
};

// The key has another value afterwards.
[[nodiscard]] bool is_real(const change& one);

// One for each wanted key, in the order of the table. in_force has them all.
[[nodiscard]] std::vector<change> changes_between(const value_set& in_force, const value_set& wanted);

// "scaling-factor: 0.75 -> 0.5", or "torque-scaling: on (unchanged)".
[[nodiscard]] std::string line_of(const change& one);
// {"key", "old", "new"}
[[nodiscard]] nlohmann::ordered_json document_of(const change& one);

} // namespace vantu::orvanta::ctl
