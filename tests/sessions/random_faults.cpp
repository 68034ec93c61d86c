// One fault out of the table, an argument in its range and a selector.
#include "sessions/random_faults.hpp"

#include "simulator/faults/faults.hpp"

#include <array>

namespace session_tests {
namespace {

using namespace vantu::orvanta::simulator;

std::string random_argument(const fault_row& row, chance& choose) {
    switch (row.argument) {
    case fault_argument::none:
        return "";
    case fault_argument::count:
        return std::to_string(row.kind == fault_kind::flood ? choose.between(1, 400) : choose.between(1, 6));
    case fault_argument::bytes:
        if (row.kind == fault_kind::short_acceptance) {
            return std::to_string(choose.below(8));
        }
        if (row.kind == fault_kind::oversize) {
            return choose.one_in(2)   ? "2049"
                   : choose.one_in(2) ? "65507"
                                      : std::to_string(choose.below(4096));
        }
        return std::to_string(choose.below(choose.one_in(2) ? 24 : 200));
    case fault_argument::milliseconds:
        return choose.one_in(2) ? std::to_string(choose.below(300))
                                : "1-" + std::to_string(choose.between(1, 200));
    case fault_argument::status: {
        constexpr std::array statuses{"178", "179", "0xA0", "0xB0", "0", "255"};
        return statuses[choose.below(statuses.size())];
    }
    case fault_argument::status_and_tag: {
        const std::string status = std::to_string(choose.below(256));
        return choose.one_in(2) ? status : status + ":" + std::to_string(choose.below(256));
    }
    case fault_argument::tag:
        return choose.one_in(2) ? "" : std::to_string(choose.below(256));
    case fault_argument::device:
        return choose.one_in(2) ? "" : std::to_string(choose.below(5));
    case fault_argument::device_type:
        return choose.one_in(2) ? "orvanta3" : "palmetron";
    }
    return "";
}

std::string random_selector(const fault_row& row, chance& choose) {
    std::string text = "@";
    if (choose.one_in(2)) {
        text += "n=" + std::to_string(choose.between(1, 12));
    } else {
        constexpr std::array probabilities{"1", "0.5", "0.2", "0.05"};
        text += std::string("p=") + probabilities[choose.below(probabilities.size())];
    }
    if (choose.one_in(3)) {
        constexpr std::array operations{"1", "3", "4", "16", "18", "19", "33", "47", "66", "68", "81", "240"};
        text += std::string(",op=") + operations[choose.below(operations.size())];
    }
    if (row.to_client && row.to_service && choose.one_in(2)) {
        text += choose.one_in(3) ? ",dir=in" : ",dir=out";
    }
    return text;
}

} // namespace

std::vector<fault_text> random_faults(chance& choose) {
    std::vector<fault_text> chosen(choose.below(5));
    for (fault_text& one : chosen) {
        const fault_row& row = faults[choose.below(faults.size())];
        std::string value = random_argument(row, choose);
        value += random_selector(row, choose);
        one = {std::string(row.name), std::move(value)};
    }
    return chosen;
}

} // namespace session_tests
