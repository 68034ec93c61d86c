// Scenario files: any text is refused in one line with the number of its line, or its devices are in order,
// each of its verbs can be run, and its schedule goes on to later times.
#include "simulator/control/scenario.hpp"
#include "shared/located_json.hpp"
#include "simulator/control/scenario_schedule.hpp"
#include "verb_runner.hpp"

#include <algorithm>
#include <cstdint>

using namespace vantu::orvanta;
using namespace vantu::orvanta::simulator;
using orvanta_fuzz::require;

namespace {

void play(const scenario& read) {
    constexpr std::int64_t a_while_ns = 1'000'000;
    constexpr std::size_t most_verbs = 100;
    simulation_settings settings;
    settings.seed = read.settings.seed.value_or(1);
    settings.devices = read.devices.value_or(std::vector<device>());
    const auto& devices = settings.devices;
    require(std::adjacent_find(devices.begin(), devices.end(),
                               [](const device& one, const device& next) { return one.id >= next.id; }) ==
                devices.end(),
            "devices that do not rise");
    orvanta_fuzz::verb_runner target(std::move(settings));
    std::size_t ran = 0;
    for (const scenario_step& step : read.steps) {
        for (const std::string& verb : step.verbs) {
            const std::string line = read.for_each_client ? verb_for_client(verb, 1) : verb;
            require(check_verb(line).empty(), "a verb that cannot be run");
            if (++ran < most_verbs) {
                (void)target.run(line);
                target.advance(a_while_ns);
            }
        }
    }
}

// Accepts two clients, one of them twice, and lets each event come to them.
void schedule(const scenario& read) {
    constexpr std::size_t most_times = 100;
    scenario_schedule tested(read.steps, read.for_each_client);
    std::int64_t now_ns = 0;
    for (const std::uint64_t client : {1U, 2U, 1U}) {
        for (const scenario_event_row& row : scenario_events) {
            const std::uint8_t code = row.code != 0 ? row.code : communication::op_code::config_save;
            tested.observe({row.way, code, {}, client}, ++now_ns);
        }
    }
    for (std::size_t i = 0; i < most_times && tested.next_due_ns() != never_ns; ++i) {
        const std::int64_t due_ns = tested.next_due_ns();
        require(!tested.take_due(due_ns).empty(), "a due step without verbs");
        require(tested.next_due_ns() > due_ns, "a time that stands still");
    }
    tested.keep_clients({});
    require(!read.for_each_client || tested.next_due_ns() == never_ns, "steps of forgotten clients");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    scenario read;
    try {
        read = read_scenario_text(text);
    } catch (const located_error& refused) {
        orvanta_fuzz::require_one_line(refused.what());
        const auto lines = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) + 1;
        require(refused.line() >= 1 && refused.line() <= lines, "a line that is not there");
        return 0;
    }
    play(read);
    schedule(read);
    return 0;
}
