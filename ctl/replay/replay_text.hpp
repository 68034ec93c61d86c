// The outcomes of a replay as lines for people and as JSON.
#pragma once

#include "ctl/replay/replayed.hpp"

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace vantu::orvanta::ctl {

// "    0.012346 s  device_opened device=1 tag=2", with a newline. The port of the client is named where there
// are several.
[[nodiscard]] std::string line_of(const replayed& one, bool names_client);

// {"time", "client"} and one of "connected", "event" with its parts, and "rejected".
[[nodiscard]] nlohmann::ordered_json document_of(const replayed& one);

// The counts at the end.
[[nodiscard]] std::string line_of(const replay_counts& counts);
[[nodiscard]] nlohmann::ordered_json document_of(const replay_counts& counts);

} // namespace vantu::orvanta::ctl
