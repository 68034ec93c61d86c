#include "ctl/doctor/finding.hpp"

#include "vantu/orvanta/common/format.hpp"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace vantu::orvanta::ctl {
namespace {

constexpr int outcome_width = 8;
constexpr int check_width = 13;
constexpr const char* end_of_colour = "\x1b[0m";

const char* colour_of(check_outcome of) noexcept {
    switch (of) {
    case check_outcome::ok:
        return "\x1b[32m";
    case check_outcome::warning:
        return "\x1b[33m";
    case check_outcome::failed:
        return "\x1b[31m";
    case check_outcome::skipped:
        return "\x1b[2m";
    }
    return end_of_colour;
}

bool has(std::span<const finding> findings, check_outcome wanted) {
    return std::any_of(findings.begin(), findings.end(),
                       [wanted](const finding& one) { return one.outcome == wanted; });
}

check_outcome worst_of(std::span<const finding> findings) {
    if (has(findings, check_outcome::failed)) {
        return check_outcome::failed;
    }
    return has(findings, check_outcome::warning) ? check_outcome::warning : check_outcome::ok;
}

} // namespace

const char* name_of(check_outcome of) noexcept {
    switch (of) {
    case check_outcome::ok:
        return "ok";
    case check_outcome::warning:
        return "warning";
    case check_outcome::failed:
        return "failed";
    case check_outcome::skipped:
        return "skipped";
    }
    return "unknown";
}

finding passed(const char* check, std::string seen) {
    return {check, check_outcome::ok, std::move(seen), ""};
}

finding warned(const char* check, std::string seen, std::string remedy) {
    return {check, check_outcome::warning, std::move(seen), std::move(remedy)};
}

finding failed(const char* check, exit_status status, std::string seen, std::string remedy) {
    return {check, check_outcome::failed, std::move(seen), std::move(remedy), status};
}

finding skipped(const char* check, std::string reason) {
    return {check, check_outcome::skipped, std::move(reason), ""};
}

bool is_usable(const finding& of) noexcept {
    return of.outcome == check_outcome::ok || of.outcome == check_outcome::warning;
}

const finding* first_failure(std::span<const finding> findings) noexcept {
    const auto found = std::find_if(findings.begin(), findings.end(),
                                    [](const finding& one) { return one.outcome == check_outcome::failed; });
    return found == findings.end() ? nullptr : &*found;
}

std::string text_of(const finding& of, bool coloured) {
    std::string told = formatted("{:<{}}", name_of(of.outcome), outcome_width);
    if (coloured) {
        told = colour_of(of.outcome) + told + end_of_colour;
    }
    std::string text = formatted("{} {:<{}} {}\n", told, of.check, check_width, of.seen);
    if (!of.remedy.empty()) {
        text += formatted("{:<{}}{}\n", "", outcome_width + check_width + 2, of.remedy);
    }
    return text;
}

nlohmann::ordered_json document_of(std::span<const finding> findings) {
    nlohmann::ordered_json checks = nlohmann::ordered_json::array();
    for (const finding& one : findings) {
        nlohmann::ordered_json told{
            {"name", one.check}, {"outcome", name_of(one.outcome)}, {"seen", one.seen}};
        if (!one.remedy.empty()) {
            told["remedy"] = one.remedy;
        }
        for (const auto& [name, figure] : one.figures) {
            told["figures"][name] = figure;
        }
        checks.push_back(std::move(told));
    }
    return {{"checks", std::move(checks)}, {"outcome", name_of(worst_of(findings))}};
}

} // namespace vantu::orvanta::ctl
