#include "ctl/settings/outcome.hpp"

#include "ctl/service/device_text.hpp"

#include <nlohmann/json.hpp>

namespace vantu::orvanta::ctl {

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
