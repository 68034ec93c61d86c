// Looks at rules one by one and tells what each comes to.
#pragma once

#include "conformance/rules.hpp"
#include "conformance/verdict.hpp"

#include <functional>
#include <vector>

namespace vantu::orvanta::conformance {

struct finding {
    const rule* what{nullptr};
    outcome how{outcome::holds};
    std::string text; // what was seen and expected, or why it could not be judged; empty where it holds
    std::int64_t time_ns{0};
};

// Each rule with connections of its own. Findings are told as they come.
std::vector<finding> look_at(std::span<const rule* const> wanted, surroundings& around,
                             const std::function<void(const finding&)>& tell);

[[nodiscard]] std::size_t count_of(std::span<const finding> findings, outcome how);

// Whether nothing was seen that the service does wrong.
[[nodiscard]] bool all_hold(std::span<const finding> findings);

} // namespace vantu::orvanta::conformance
