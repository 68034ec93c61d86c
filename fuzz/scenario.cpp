// Scenario files: any text is refused in one line with the number of its line, or its devices are in order
// and each of its verbs can be run.
#include "simulator/control/scenario.hpp"
#include "shared/located_json.hpp"
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
            require(check_verb(verb).empty(), "a verb that cannot be run");
            if (++ran < most_verbs) {
                (void)target.run(verb);
                target.advance(a_while_ns);
            }
        }
    }
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
    return 0;
}
