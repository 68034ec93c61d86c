#include "sessions/random_service.hpp"

#include "simulator/faults/faults.hpp"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <string_view>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta::simulator;

std::string random_field(chance& choose) {
    constexpr std::array fields{
        "header.magic", "header.version", "header.reserved", "op.magic",  "op.code",    "op.length",
        "tag",          "device",         "enabled",         "status",    "handedness", "scaling_factor",
        "values[2]",    "client_id",      "device_type",     "tail_count"};
    constexpr std::array values{"other", "other", "0", "1", "2", "255"};
    const std::string field = fields[choose.below(fields.size())];
    const bool is_float = field == "scaling_factor" || field == "values[2]";
    return field + '=' + (is_float && choose.one_in(2) ? "nan" : values[choose.below(values.size())]);
}

// Operations that are known, unknown, cut off and none at all.
std::string random_bytes(chance& choose) {
    constexpr std::array kinds{"ff5704000001020304", "ff0200000a", "ff42090000", "00", "ff"};
    return kinds[choose.below(kinds.size())];
}

std::string random_argument(const fault_row& row, chance& choose) {
    switch (row.argument) {
    case fault_argument::none:
        return "";
    case fault_argument::count:
        return std::to_string(row.kind == fault_kind::flood ? choose.between(1, 400) : choose.between(1, 6));
    case fault_argument::size:
        if (row.kind == fault_kind::extend && choose.one_in(3)) {
            return choose.one_in(2) ? "65507" : std::to_string(choose.below(4096));
        }
        return std::to_string(choose.below(choose.one_in(2) ? 24 : 200));
    case fault_argument::milliseconds:
        return choose.one_in(2) ? std::to_string(choose.below(300))
                                : "1-" + std::to_string(choose.between(1, 200));
    case fault_argument::field:
        return random_field(choose);
    case fault_argument::hexadecimal:
        return random_bytes(choose);
    case fault_argument::status: {
        constexpr std::array statuses{"178", "179", "0xA0", "0xB0", "0", "255"};
        const std::string status =
            choose.one_in(2) ? statuses[choose.below(statuses.size())] : std::to_string(choose.below(256));
        return choose.one_in(2) ? status : status + ":" + std::to_string(choose.below(256));
    }
    case fault_argument::device:
        return choose.one_in(2) ? "" : std::to_string(choose.below(5));
    case fault_argument::device_type:
        return choose.one_in(2) ? "orvanta3" : "palmetron";
    }
    return "";
}

std::string random_selector(const fault_row& row, chance& choose) {
    std::string text = "@";
    switch (choose.below(4)) {
    case 0:
    case 1:
        text += "nth=" + std::to_string(choose.between(1, 12));
        break;
    case 2:
        text += "every=" + std::to_string(choose.between(2, 9));
        break;
    default:
        constexpr std::array probabilities{"1", "0.5", "0.2", "0.05", "0.2,burst=5"};
        text += std::string("p=") + probabilities[choose.below(probabilities.size())];
    }
    if (row.argument == fault_argument::status && choose.one_in(2)) {
        text += ",op=connect";
    } else if (choose.one_in(3)) {
        constexpr std::array operations{"1", "3", "4", "16", "18", "19", "33", "47", "66", "68", "81", "240"};
        text += std::string(",op=") + operations[choose.below(operations.size())];
    }
    if (row.to_client && choose.one_in(2)) {
        text += choose.one_in(3) ? ",dir=answer" : ",dir=out";
    } else if (row.to_service && choose.one_in(4)) {
        text += ",dir=in";
    }
    if (choose.one_in(6)) {
        text += ",device=" + std::to_string(choose.between(1, 3));
    }
    return text;
}

bool can_be_read(const fault_row& row, const std::string& text) {
    try {
        (void)parse_fault(row.kind, text);
        return true;
    } catch (const std::invalid_argument&) {
        return false;
    }
}

// A flood of the longest datagrams is gigabytes a second; where there is a flood they are shorter.
void bound_floods(std::vector<fault_text>& faults) {
    const bool floods =
        std::any_of(faults.begin(), faults.end(), [](const fault_text& one) { return one.first == "flood"; });
    for (auto& [name, value] : faults) {
        if (floods && name == "extend" && value.starts_with("65507")) {
            value.replace(0, std::string_view("65507").size(), "4095");
        }
    }
}

} // namespace

std::vector<fault_text> random_faults(chance& choose) {
    std::vector<fault_text> chosen(choose.below(5));
    for (fault_text& one : chosen) {
        const fault_row& row = faults[choose.below(faults.size())];
        std::string value;
        do { // what no datagram can fit is drawn anew
            value = random_argument(row, choose) + random_selector(row, choose);
        } while (!can_be_read(row, value));
        one = {std::string(row.name), std::move(value)};
    }
    bound_floods(chosen);
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
