// A client under each fault in each situation, as tables. docs/faults.md shows them, and the tests hold the
// library and the documents against them.
#pragma once

#include "simulator/faults/faults.hpp"

#include <algorithm>
#include <span>
#include <string_view>
#include <vector>

namespace orvanta_tests {

using vantu::orvanta::simulator::fault_kind;
using vantu::orvanta::simulator::fault_row;
using vantu::orvanta::simulator::faults;

// One fault in one situation.
struct matrix_row {
    std::string_view rule; // the verb, or two with "and" between them
    unsigned happened;     // how often the fault happens
    std::string_view seen; // the codes that the client is returned and the events that it is handed, in order
    std::string_view logged; // the library's log lines but for that of a connection; "-": none
    std::string_view next;   // the outcome of the next call, the fault healed
};

// The verbs of a row, one after the other.
inline std::vector<std::string_view> verbs_of(std::string_view rule) {
    constexpr std::string_view between = " and ";
    std::vector<std::string_view> verbs;
    for (auto end = rule.find(between); end != std::string_view::npos; end = rule.find(between)) {
        verbs.push_back(rule.substr(0, end));
        rule.remove_prefix(end + between.size());
    }
    verbs.push_back(rule);
    return verbs;
}

// Whether the rows are about every fault, and about each that can happen to datagrams from clients also in
// that direction where that is asked for.
consteval bool is_complete(std::span<const matrix_row> rows, bool with_requests) {
    return std::all_of(faults.begin(), faults.end(), [&](const fault_row& fault) {
        const auto is_about = [&](const matrix_row& row) {
            return row.rule.substr(0, row.rule.find(' ')) == fault.name;
        };
        const auto is_about_requests = [&](const matrix_row& row) {
            return is_about(row) && row.rule.find("dir=in") != std::string_view::npos;
        };
        return std::any_of(rows.begin(), rows.end(), is_about) &&
               (!with_requests || !(fault.to_service && fault.to_client) ||
                std::any_of(rows.begin(), rows.end(), is_about_requests));
    });
}

} // namespace orvanta_tests
