#include "sessions/random_service.hpp"

#include "simulator/faults/faults.hpp"

#include <array>

namespace orvanta_tests {
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

simulation_settings random_settings(chance& choose) {
    constexpr std::array rates{0.0, 20.0, 100.0, 1000.0};
    simulation_settings settings;
    settings.announce = choose.one_in(2) ? announce_order::before : announce_order::after;
    settings.single_client = choose.one_in(10);
    settings.rate_hz = rates[choose.below(rates.size())];
    settings.seed = choose.any();
    const std::uint64_t orvanta3_count = choose.below(choose.one_in(20) ? 60 : 4);
    settings.devices = make_devices(orvanta3_count, choose.below(3));
    return settings;
}

void add_faults(simulation& service, const std::vector<fault_text>& faults) {
    for (const auto& [name, value] : faults) {
        service.add_fault(parse_fault(find_fault(name)->kind, value));
    }
}

void happen_to(simulation& service, chance& choose) {
    switch (choose.below(4)) {
    case 0:
        (void)service.unplug(static_cast<std::uint32_t>(choose.between(1, 4)));
        break;
    case 1:
        (void)service.plug(static_cast<std::uint8_t>(choose.between(1, 2)));
        break;
    case 2:
        if (choose.one_in(3)) {
            service.restart();
        }
        break;
    default:
        if (choose.one_in(4)) {
            service.say_goodbye();
        }
    }
}

std::string faults_of_session(std::uint64_t seed) {
    chance choose(seed);
    std::string text;
    for (const auto& [name, value] : random_faults(choose)) {
        text += "  " + name + ' ' + value + '\n';
    }
    return text.empty() ? "  none\n" : text;
}

} // namespace orvanta_tests
