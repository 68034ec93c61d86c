#include "simulator/faults/faults.hpp"

#include "vantu/orvanta/common/format.hpp"

#include <algorithm>
#include <utility>

namespace vantu::orvanta::simulator {
namespace {

using communication::direction;

std::string span_text(const fault_rule& rule) {
    std::string text = formatted("{}", *rule.first);
    if (rule.last.has_value()) {
        text += formatted("-{}", *rule.last);
    }
    return text;
}

std::string status_text(const fault_rule& rule) {
    std::string text = formatted("0x{:02X}", *rule.first);
    if (rule.last.has_value()) {
        text += formatted(":{}", *rule.last);
    }
    return text;
}

std::string argument_text(const fault_rule& rule) {
    if (!rule.first.has_value()) {
        return {};
    }
    switch (row_of(rule.kind).argument) {
    case fault_argument::milliseconds:
        return span_text(rule);
    case fault_argument::status:
    case fault_argument::status_and_tag:
        return status_text(rule);
    case fault_argument::device_type:
        return *rule.first == vantu_orvanta_device_type_palmetron ? "palmetron" : "orvanta3";
    default:
        return formatted("{}", *rule.first);
    }
}

std::string selector_text(const fault_rule& rule) {
    std::string text;
    const auto add = [&text](const std::string& selector) {
        text += text.empty() ? '@' : ',';
        text += selector;
    };
    if (rule.code.has_value()) {
        add(formatted("op={}", *rule.code));
    }
    if (rule.way.has_value()) {
        add(*rule.way == direction::to_service ? "dir=in" : "dir=out");
    }
    if (rule.nth != 0) {
        add(formatted("n={}", rule.nth));
    }
    // Without any selector it would be asked for at once.
    if (rule.probability != 1 || (text.empty() && row_of(rule.kind).at_once && !rule.now)) {
        add(formatted("p={}", rule.probability));
    }
    return text;
}

} // namespace

const fault_row* find_fault(std::string_view name) noexcept {
    const auto* const found =
        std::find_if(faults.begin(), faults.end(), [name](const fault_row& row) { return row.name == name; });
    return found != faults.end() ? found : nullptr;
}

std::string text_of(const fault_rule& rule) {
    std::string text(row_of(rule.kind).name);
    const std::string value = argument_text(rule) + selector_text(rule);
    if (!value.empty()) {
        text.append(1, ' ').append(value);
    }
    return text;
}

fault_rule parse_initial_fault(fault_kind kind, std::string_view text) {
    fault_rule rule = parse_fault(kind, text);
    rule.nth = rule.now ? 1 : rule.nth;
    rule.now = false;
    return rule;
}

} // namespace vantu::orvanta::simulator
