#include "conformance/run.hpp"

#include <algorithm>

namespace vantu::orvanta::conformance {
namespace {

finding look_at_one(const rule& what, surroundings& around) {
    finding found;
    found.what = &what;
    const std::int64_t start_ns = around.time.now_ns();
    try {
        what.look(around);
    } catch (const verdict& seen) {
        found.how = seen.how();
        found.text = seen.text();
    } catch (const std::exception& refused) { // by the system
        found.how = outcome::stopped;
        found.text = refused.what();
    }
    found.time_ns = around.time.now_ns() - start_ns;
    return found;
}

} // namespace

std::vector<finding> look_at(std::span<const rule* const> wanted, surroundings& around,
                             const std::function<void(const finding&)>& tell) {
    std::vector<finding> findings;
    for (const rule* one : wanted) {
        findings.push_back(look_at_one(*one, around));
        tell(findings.back());
    }
    return findings;
}

std::size_t count_of(std::span<const finding> findings, outcome how) {
    return static_cast<std::size_t>(std::count_if(findings.begin(), findings.end(),
                                                  [how](const finding& one) { return one.how == how; }));
}

bool all_hold(std::span<const finding> findings) {
    return count_of(findings, outcome::fails) + count_of(findings, outcome::stopped) == 0;
}

} // namespace vantu::orvanta::conformance
