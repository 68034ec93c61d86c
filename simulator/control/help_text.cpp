// The help's topics. What is in a table comes from there.
#include "simulator/control/options.hpp"
#include "simulator/control/scenario.hpp"
#include "simulator/faults/faults.hpp"
#include "simulator/simulation/verb_syntax.hpp"
#include "simulator/simulation/verbs.hpp"
#include "vantu/orvanta/common/format.hpp"

#include <cstddef>

namespace vantu::orvanta::simulator {
namespace {

// Selectors, then all faults in two columns, one above the other.
std::string faults_help() {
    std::string text = "A fault is an option (--drop 0.05) and a verb of console and scenario: its name,\n"
                       "its argument, and after '@' selectors with commas between them. Options can be\n"
                       "repeated; rules act in their order. More on one: --help drop\n";
    for (const selector_row& row : fault_selectors) {
        text += formatted("  {:<18}{}\n", formatted("{}={}", row.key, row.form), row.meaning);
    }
    const std::size_t rows = (faults.size() + 1) / 2;
    for (std::size_t i = 0; i < rows; ++i) {
        const auto shown = [](const fault_row& row) { return formatted("{} {}", row.name, row.example); };
        text += i + rows < faults.size()
                    ? formatted("  {:<43}{}\n", shown(faults[i]), shown(faults[i + rows]))
                    : formatted("  {}\n", shown(faults[i]));
    }
    return text;
}

std::string scenario_help() {
    std::string events;
    for (const scenario_event_row& row : scenario_events) {
        events += formatted("{}{}", events.empty() ? "" : ", ", row.name);
    }
    return "A scenario is a file of JSON text: devices, and what happens when.\n\n"
           "  {\"version\": 1, \"about\": \"What it shows\", \"seed\": 7,\n"
           "   \"devices\": [{\"type\": \"orvanta3\", \"id\": 1, \"short_id\": \"3001\", \"uuid\": \"...\",\n"
           "    \"configuration\": {\"handedness\": \"left\", \"torque_scaling\": {\"enabled\": true},\n"
           "      \"gravity_compensation\": {\"enabled\": true, \"scaling_factor\": 0.5}}}],\n"
           "   \"steps\": [{\"at\": 2000, \"every\": 500, \"times\": 3, \"do\": \"plug palmetron\"},\n"
           "             {\"after\": \"open\", \"delay\": 500, \"do\": [\"drop 0.3\", \"unplug 1\"]},\n"
           "             {\"after\": {\"event\": \"request\", \"op\": 66, \"n\": 3}, \"each\": true,\n"
           "              \"do\": \"restart\"}], \"for_each_client\": false,\n"
           "   \"port\": 0, \"orvanta3\": 1, \"palmetron\": 1, \"announce\": \"after\", \"rate\": 100,\n"
           "   \"single_client\": true, \"state\": \"FILE\", \"trace\": \"FILE\", \"capture\": \"FILE\",\n"
           "   \"faults\": [\"drop 0.05\"], \"verbose\": true}\n\n"
           "Only version is required, and type of a device, do of a step, at or after.\n"
           "  at, delay  milliseconds since the start, since the event\n"
           "  after      " +
           events +
           "\n"
           "  each       after each such event; every, times: the step comes again\n"
           "  do         verbs of the console, but not wait; client=this if for_each_client\n"
           "  port ...   as the options, which go before; counts not beside devices\n"
           "Whatever is wrong ends the program before it starts, with path and line.\n"
           "Examples are installed in share/orvanta/scenarios; see orvanta-scenario(5).\n";
}

std::string console_help() {
    return "With --interactive each line of standard input is a verb, and is answered on\n"
           "standard output: with what it shows, with \"ok\" or with \"error: \" and why.\n"
           "On a terminal \"> \" asks for the next line and Ctrl-D quits. A script, as in\n"
           "  printf 'wait 2000\\nunplug 1\\n' | orvanta-simulator --interactive\n"
           "may end; the service goes on. Lines that begin with # do nothing.\n"
           "With --control scripts do the same at a socket; --json answers with documents.\n" +
           verb_help_text({});
}

} // namespace

std::optional<std::string> help_on(std::string_view topic) {
    if (topic == "faults") {
        return faults_help();
    }
    if (topic == "scenario") {
        return scenario_help();
    }
    if (topic == "console") {
        return console_help();
    }
    if (find_fault(topic) != nullptr || find_verb(topic) != nullptr) {
        return verb_help_text(topic);
    }
    return std::nullopt;
}

} // namespace vantu::orvanta::simulator
