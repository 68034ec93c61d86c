#include "simulator/library/prepared_settings.hpp"

#include "shared/text_lines.hpp"
#include "simulator/service/streams.hpp"
#include "vantu/orvanta/common/format.hpp"

#include <algorithm>
#include <charconv>
#include <random>
#include <stdexcept>
#include <type_traits>
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
    if (!is_port(wanted.port.value_or("0"))) {
        throw std::invalid_argument(
            formatted("port '{}'; a decimal number from 0 to 65535 would be right", *wanted.port));
    }
    if (std::max(wanted.orvanta3_count, wanted.palmetron_count) > most_devices_of_a_type) {
        throw std::invalid_argument(formatted("more than {} devices of a type; 0 to {} would be right",
                                              most_devices_of_a_type, most_devices_of_a_type));
    }
    if (const double rate_hz = wanted.rate_hz.value_or(0); !(rate_hz >= 0 && rate_hz <= greatest_rate_hz)) {
        throw std::invalid_argument(
            formatted("rate {} Hz; 0 to {} would be right", rate_hz, greatest_rate_hz));
    }
}

// The settings that are wanted, and those of the scenario in the place of those that are left out.
service_simulator::settings merged(service_simulator::settings wanted,
                                   const service_simulator::settings& of_scenario) {
    const auto fill = [](auto& setting, const auto& other) {
        if (setting == std::decay_t<decltype(setting)>{}) {
            setting = other;
        }
    };
    fill(wanted.port, of_scenario.port);
    fill(wanted.orvanta3_count, of_scenario.orvanta3_count);
    fill(wanted.palmetron_count, of_scenario.palmetron_count);
    fill(wanted.rate_hz, of_scenario.rate_hz);
    fill(wanted.seed, of_scenario.seed);
    fill(wanted.state_path, of_scenario.state_path);
    fill(wanted.devices, of_scenario.devices);
    fill(wanted.single_client, of_scenario.single_client);
    fill(wanted.capture_path, of_scenario.capture_path);
    wanted.faults.insert(wanted.faults.end(), of_scenario.faults.begin(), of_scenario.faults.end());
    return wanted;
}

std::vector<device> devices_of(const service_simulator::settings& chosen, scenario& script) {
    if (!script.devices) {
        return make_devices(chosen.orvanta3_count.value_or(1), chosen.palmetron_count.value_or(1));
    }
    if (chosen.orvanta3_count || chosen.palmetron_count) {
        throw std::invalid_argument(
            "orvanta3 and palmetron: the scenario names its devices; one of the two would be right");
    }
    return std::move(*script.devices);
}

} // namespace

prepared_settings prepare(const service_simulator::settings& wanted) {
    check(wanted);
    prepared_settings made;
    made.script = wanted.scenario_path.empty() ? scenario{} : read_scenario(wanted.scenario_path);
    made.script.about = without_control_characters(made.script.about);
    made.chosen = merged(wanted, made.script.settings);
    for (const std::string& text : made.chosen.faults) {
        made.faults.push_back(initial_fault(text));
    }
    made.simulated.devices = devices_of(made.chosen, made.script);
    made.simulated.announce = made.chosen.devices == service_simulator::announce::after
                                  ? announce_order::after
                                  : announce_order::before;
    made.simulated.single_client = made.chosen.single_client.value_or(false);
    made.simulated.rate_hz = made.chosen.rate_hz.value_or(made.simulated.rate_hz);
    made.simulated.seed = made.chosen.seed ? *made.chosen.seed : random_seed();
    made.simulated.narrate = wanted.narrate;
    made.simulated.warn = wanted.warn;
    if (!made.chosen.state_path.empty()) {
        made.state = std::make_unique<saved_state>(made.chosen.state_path);
        made.simulated.state = made.state.get();
    }
    return made;
}

} // namespace vantu::orvanta::simulator
