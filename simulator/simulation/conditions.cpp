#include "simulator/simulation/conditions.hpp"

#include "shared/near_word.hpp"
#include "shared/text_lines.hpp"
#include "simulator/simulation/simulation.hpp"
#include "vantu/orvanta/common/format.hpp"

#include <algorithm>
#include <stdexcept>
#include <vector>

namespace vantu::orvanta::simulator {
namespace {

using communication::direction;

const condition_row& row_named(std::string_view name) {
    const auto* const found = std::find_if(conditions.begin(), conditions.end(),
                                           [name](const condition_row& row) { return row.name == name; });
    if (found == conditions.end()) {
        std::string known;
        for (const condition_row& row : conditions) {
            known += formatted("{}{}", known.empty() ? "" : " or ", row.name);
        }
        throw std::invalid_argument(formatted("'{}' is no condition; {} would be right, as in '{}'", name,
                                              known, conditions.front().example));
    }
    return *found;
}

std::string_view take_subject(const condition_row& row, std::string_view& rest) {
    if (row.subject.empty()) {
        return {};
    }
    const std::string_view subject = take_word(rest);
    if (subject.empty()) {
        throw std::invalid_argument(
            formatted("{} lacks {}; '{}' would be right", row.name, row.subject, row.example));
    }
    return subject;
}

void read_comparison(condition& made, std::string_view rest) {
    const std::string_view whole = rest.empty() ? ">= 1" : rest;
    rest = whole;
    const std::string_view sign = take_word(rest);
    const auto number = whole_number(take_word(rest));
    if (std::find(comparisons.begin(), comparisons.end(), sign) == comparisons.end() || !number ||
        !rest.empty()) {
        throw std::invalid_argument(
            formatted("'{}' is no comparison; =, >= or <= and a whole number would be right, as in '{} >= 2'",
                      whole, made.text));
    }
    made.text += formatted(" {} {}", sign, *number);
    made.holds = [least = sign == "<=" ? 0 : *number, most = sign == ">=" ? ~std::uint64_t{0} : *number](
                     std::uint64_t counted) { return counted >= least && counted <= most; };
}

condition read(std::string_view rest) {
    const condition_row& row = row_named(take_word(rest));
    std::string_view subject = take_subject(row, rest);
    condition made;
    switch (row.kind) {
    case condition_kind::in:
    case condition_kind::out: {
        const auto way = row.kind == condition_kind::in ? direction::to_service : direction::to_client;
        const communication::operation& counted = operation_named(way, subject);
        subject = counted.name;
        made.count = [way, code = counted.code](const simulation& target) {
            return target.operations().of(way, code);
        };
        break;
    }
    case condition_kind::happened:
        made.count = [kind = fault_named(subject).kind](const simulation& target) {
            return target.faults().happened(kind);
        };
        break;
    case condition_kind::clients:
        made.count = [](const simulation& target) { return target.clients().size(); };
        break;
    case condition_kind::devices:
        made.count = [](const simulation& target) { return target.devices().size(); };
        break;
    }
    made.text = formatted("{}{}{}", row.name, subject.empty() ? "" : " ", subject);
    read_comparison(made, rest);
    return made;
}

} // namespace

condition parse_condition(std::string_view asking, std::string_view text) {
    try {
        return read(text);
    } catch (const std::invalid_argument& wrong) {
        throw std::invalid_argument(without_control_characters(formatted("{}: {}", asking, wrong.what())));
    }
}

const communication::operation& operation_named(direction way, std::string_view text) {
    const auto code = whole_number(text);
    std::vector<std::string_view> names;
    for (const communication::operation& row : communication::operations) {
        if (row.way != way) {
            continue;
        }
        if (row.name == text || code == row.code) {
            return row;
        }
        names.push_back(row.name);
    }
    throw std::invalid_argument(
        formatted("'{}' is no operation that goes {}{}", without_control_characters(text),
                  way == direction::to_service ? "to the service" : "to clients", hint_for(text, names)));
}

std::string unmet(const condition& wanted, const simulation& target) {
    const std::uint64_t counted = wanted.count(target);
    return wanted.holds(counted) ? std::string() : formatted("{}; it is {}", wanted.text, counted);
}

} // namespace vantu::orvanta::simulator
