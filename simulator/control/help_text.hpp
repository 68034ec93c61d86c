// The help beyond the list of options, by topics. Each fits a screen of 80 columns and 24 lines.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace vantu::orvanta::simulator {

inline constexpr std::array<std::string_view, 3> help_topics{"faults", "scenario", "console"};

// The help on a topic, a fault or a verb; empty where there is none of that name.
[[nodiscard]] std::optional<std::string> help_on(std::string_view topic);

} // namespace vantu::orvanta::simulator
