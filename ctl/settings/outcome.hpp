// What set and restore print in the end.
#pragma once

#include "ctl/arguments/request.hpp"
#include "ctl/settings/changes.hpp"
#include "vantu/orvanta/device.hpp"

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

namespace vantu::orvanta::ctl {

// A line a change; "saved" after --save. A dry run says "would" in each.
[[nodiscard]] std::string text_of(const std::vector<change>& changes, const request& asked);

// {"device", "dry_run", "changes": [{"key", "old", "new"}], "saved"}
[[nodiscard]] nlohmann::ordered_json document_of(const device& chosen, const std::vector<change>& changes,
                                                 const request& asked);

} // namespace vantu::orvanta::ctl
