#include "simulator/faults/faults.hpp"

#include "shared/text_lines.hpp"
#include "vantu/orvanta/common/format.hpp"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace vantu::orvanta::simulator {
namespace {

using communication::direction;

// The argument's second number after its sign, where there is one.
std::string last_text(const fault_rule& rule, char between) {
    return rule.last.has_value() ? formatted("{}{}", between, *rule.last) : "";
}

std::string argument_text(const fault_rule& rule) {
    const fault_argument argument = row_of(rule.kind).argument;
    if (argument == fault_argument::none && rule.probability != 1) {
        return formatted("{}", rule.probability);
    }
    if (!rule.first.has_value()) {
        return rule.text;
    }
    switch (argument) {
    case fault_argument::milliseconds:
        return formatted("{}{}", *rule.first, last_text(rule, '-'));
    case fault_argument::status:
        return formatted("0x{:02X}{}", *rule.first, last_text(rule, ':'));
    case fault_argument::device_type:
        return *rule.first == vantu_orvanta_device_type_palmetron ? "palmetron" : "orvanta3";
    default:
        return formatted("{}", *rule.first);
    }
}

std::string selector_text(const fault_rule& rule) {
    std::string text;
    const auto add = [&text](bool given, std::string_view key, const auto& value) {
        if (given) {
            text += formatted("{}{}={}", text.empty() ? '@' : ',', key, value);
        }
    };
    const fault_row& row = row_of(rule.kind);
    add(rule.code.has_value(), "op", rule.code.value_or(0));
    add(rule.way.has_value(), "dir",
        rule.answers                        ? "answer"
        : rule.way == direction::to_service ? "in"
                                            : "out");
    add(rule.device.has_value(), "device", rule.device.value_or(0));
    add(rule.client != 0, "client", rule.client);
    add(rule.nth != 0, "nth", rule.nth);
    add(rule.every != 0, "every", rule.every);
    add(rule.burst != 0, "burst", rule.burst);
    add(!rule.name.empty(), "as", rule.name);
    const bool is_argument = row.argument == fault_argument::none && rule.probability != 1;
    // Without any selector it would be asked for at once.
    const bool needs_one = text.empty() && row.at_once && !rule.now;
    add(!is_argument && (rule.probability != 1 || needs_one), "p", rule.probability);
    return text;
}

} // namespace

const fault_row* find_fault(std::string_view name) noexcept {
    const auto* const found =
        std::find_if(faults.begin(), faults.end(), [name](const fault_row& row) { return row.name == name; });
    return found != faults.end() ? found : nullptr;
}

const fault_row& fault_named(std::string_view text) {
    const fault_row* const row = find_fault(text);
    if (row == nullptr) {
        throw std::invalid_argument(
            formatted("'{}' is no fault; one of those that 'help' lists would be right",
                      without_control_characters(text)));
    }
    return *row;
}

std::string text_of(const fault_rule& rule) {
    std::string text(row_of(rule.kind).name);
    const std::string value = argument_text(rule) + selector_text(rule);
    if (!value.empty()) {
        text.append(1, ' ').append(value);
    }
    return text;
}

fault_rule initial_fault(std::string_view text) {
    const fault_row& row = fault_named(take_word(text));
    fault_rule rule = parse_fault(row.kind, text);
    rule.nth = rule.now ? 1 : rule.nth;
    rule.now = false;
    return rule;
}

} // namespace vantu::orvanta::simulator
