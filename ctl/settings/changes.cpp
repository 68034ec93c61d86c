#include "ctl/settings/changes.hpp"

#include <nlohmann/json.hpp>

namespace vantu::orvanta::ctl {

bool is_real(const change& one) {
    return !are_same(one.before, one.after);
}

std::vector<change> changes_between(const value_set& in_force, const value_set& wanted) {
    std::vector<change> found;
    for (const auto& [which, after] : wanted) {
        found.push_back({which, in_force.at(which), after});
    }
    return found;
}

std::string line_of(const change& one) {
    const std::string name(row_of(one.which).name);
    return is_real(one) ? name + ": " + text_of(one.before) + " -> " + text_of(one.after)
                        : name + ": " + text_of(one.before) + " (unchanged)";
}

nlohmann::ordered_json document_of(const change& one) {
    return {{"key", row_of(one.which).name}, {"old", json_of(one.before)}, {"new", json_of(one.after)}};
}

} // namespace vantu::orvanta::ctl
