// The changes that setting some keys makes, and how set and restore print them.
#pragma once

#include "ctl/arguments/request.hpp"
#include "ctl/settings/values.hpp"
#include "vantu/orvanta/device.hpp"

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

// A line a change; "saved" after --save. A dry run says "would" in each.
[[nodiscard]] std::string text_of(const std::vector<change>& changes, const request& asked);
// {"device", "dry_run", "changes": [...], "saved"}
[[nodiscard]] nlohmann::ordered_json document_of(const device& chosen, const std::vector<change>& changes,
                                                 const request& asked);

} // namespace vantu::orvanta::ctl
