// Answers to lines as JSON documents, one a line.
#pragma once

#include "simulator/simulation/verbs.hpp"
#include "vantu/orvanta/simulator.hpp"

#include <string>
#include <string_view>

namespace vantu::orvanta::simulator {

// {"ok":true,"text":"plugged in 2"} or {"ok":false,"error":"..."}; a good line "status" has the state as data
// as well. Texts lack their last line feed.
[[nodiscard]] std::string json_answer(const service_simulator& service, std::string_view line,
                                      const verb_result& result);

// {"shown":"unplugged 1"}: what nobody's line has asked for.
[[nodiscard]] std::string json_shown(std::string_view text);

} // namespace vantu::orvanta::simulator
