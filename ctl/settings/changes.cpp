#include "ctl/settings/changes.hpp"

#include "ctl/service/device_text.hpp"

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

std::string text_of(const std::vector<change>& changes, const request& asked) {
    std::string text;
    for (const change& one : changes) {
        text += (asked.dry_run && is_real(one) ? "would set " : "") + line_of(one) + "\n";
    }
    if (asked.save) {
        text += asked.dry_run ? "would save\n" : "saved\n";
    }
    return text;
}

nlohmann::ordered_json document_of(const device& chosen, const std::vector<change>& changes,
                                   const request& asked) {
    nlohmann::ordered_json documents = nlohmann::ordered_json::array();
    for (const change& one : changes) {
        documents.push_back(document_of(one));
    }
    return {{"device", document_of(chosen)},
            {"dry_run", asked.dry_run},
            {"changes", std::move(documents)},
            {"saved", asked.save && !asked.dry_run}};
}

} // namespace vantu::orvanta::ctl
