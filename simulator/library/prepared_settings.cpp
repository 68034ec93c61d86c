#include "simulator/library/prepared_settings.hpp"

#include "shared/text_lines.hpp"
#include "simulator/service/streams.hpp"
#include "vantu/orvanta/common/format.hpp"

#include <algorithm>
#include <charconv>
#include <random>
#include <stdexcept>
#include <utility>

namespace vantu::orvanta::simulator {
namespace {

// Each run has chances of its own, and ids of clients that no other run gives.
std::uint64_t random_seed() {
    std::random_device source;
    return (static_cast<std::uint64_t>(source()) << 32U) | source();
}

bool is_port(const std::string& text) {
    std::uint16_t value = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    return error == std::errc{} && stop == end;
}

void check(const service_simulator::settings& wanted) {
    if (!is_port(wanted.port)) {
        throw std::invalid_argument(
            formatted("port '{}'; a decimal number from 0 to 65535 would be right", wanted.port));
    }
    if (std::max(wanted.orvanta3_count, wanted.palmetron_count) > most_devices_of_a_type) {
        throw std::invalid_argument(formatted("more than {} devices of a type; 0 to {} would be right",
                                              most_devices_of_a_type, most_devices_of_a_type));
    }
    if (!(wanted.rate_hz >= 0 && wanted.rate_hz <= greatest_rate_hz)) {
        throw std::invalid_argument(
            formatted("rate {} Hz; 0 to {} would be right", wanted.rate_hz, greatest_rate_hz));
    }
}

// A rule of the text "NAME ARGUMENT@SELECTOR,...".
fault_rule initial_fault(std::string_view text) {
    const std::string_view name = take_word(text);
    const fault_row* const row = find_fault(name);
    if (row == nullptr) {
        throw std::invalid_argument(
            formatted("'{}' is no fault; one of those that 'help' lists would be right",
                      without_control_characters(name)));
    }
    return parse_initial_fault(row->kind, text);
}

std::vector<device> devices_of(const service_simulator::settings& wanted, scenario& script) {
    if (!script.devices) {
        return make_devices(wanted.orvanta3_count.value_or(1), wanted.palmetron_count.value_or(1));
    }
    if (wanted.orvanta3_count || wanted.palmetron_count) {
        throw std::invalid_argument(
            "orvanta3 and palmetron: the scenario names its devices; one of the two would be right");
    }
    return std::move(*script.devices);
}

} // namespace

prepared_settings prepare(const service_simulator::settings& wanted) {
    check(wanted);
    prepared_settings made;
    for (const std::string& text : wanted.faults) {
        made.faults.push_back(initial_fault(text));
    }
    scenario script = wanted.scenario_path.empty() ? scenario{} : read_scenario(wanted.scenario_path);
    made.simulated.devices = devices_of(wanted, script);
    made.simulated.announce = wanted.devices == service_simulator::announce::before ? announce_order::before
                                                                                    : announce_order::after;
    made.simulated.single_client = wanted.single_client;
    made.simulated.rate_hz = wanted.rate_hz;
    made.simulated.seed = wanted.seed ? *wanted.seed : script.seed ? *script.seed : random_seed();
    made.simulated.narrate = wanted.narrate;
    made.simulated.warn = wanted.warn;
    made.steps = std::move(script.steps);
    made.about = without_control_characters(script.about);
    if (!wanted.state_path.empty()) {
        made.state = std::make_unique<saved_state>(wanted.state_path);
        made.simulated.state = made.state.get();
    }
    return made;
}

} // namespace vantu::orvanta::simulator
