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

std::string option_with_example(const fault_row& row) {
    return formatted("--{} {}", row.name, row.example);
}

// All faults in two columns, one above the other.
std::string faults_help() {
    std::string text = "A fault is an option, a verb of the console or a verb of a scenario. After its\n"
                       "name stands ARGUMENT@SELECTOR,..., each part where it is wanted. Selectors:\n"
                       "  op=CODE  datagrams with this operation   p=P  happens with this probability\n"
                       "  dir=in   those from clients; out: to     n=N  happens once, to the Nth of them\n"
                       "Options can be repeated; they act in their order. More on one: --help drop\n\n";
    const std::size_t rows = (faults.size() + 1) / 2;
    for (std::size_t i = 0; i < rows; ++i) {
        const std::string right = i + rows < faults.size() ? option_with_example(faults[i + rows]) : "";
        text += formatted("  {:<36}{}\n", option_with_example(faults[i]), right);
    }
    return text;
}

std::string_view argument_help(fault_argument argument) {
    switch (argument) {
    case fault_argument::count:
        return "a whole number from 1";
    case fault_argument::bytes:
        return "a number of bytes";
    case fault_argument::milliseconds:
        return "milliseconds, or A-B for a time between the two";
    case fault_argument::status:
        return "a service status, decimal or as in 0xB2";
    case fault_argument::status_and_tag:
        return "a service status, and :TAG for another tag than the request's";
    case fault_argument::tag:
        return "a tag from 0 to 255; another one than the reply's if left out";
    case fault_argument::device:
        return "a device id; may be left out";
    case fault_argument::device_type:
        return "orvanta3 or palmetron";
    case fault_argument::none:
        break;
    }
    return "none; a probability can stand in its place";
}

std::string fault_help(const fault_row& row) {
    const std::string_view ways = !row.to_client ? "datagrams from clients"
                                  : !row.to_service
                                      ? "datagrams to clients"
                                      : "datagrams in both directions, without dir=in or dir=out";
    return formatted("{}\n  {}\n\n"
                     "Argument    {}\n"
                     "Happens to  {}\n"
                     "{}"
                     "Example     {}\n",
                     row.name, row.effect, argument_help(row.argument), ways,
                     row.at_once ? "At once     as a verb without a selector; as an option to the first "
                                   "datagram\n"
                                 : "",
                     option_with_example(row));
}

std::string scenario_help() {
    std::string events;
    for (const scenario_event_row& row : scenario_events) {
        events += formatted("{}{}", events.empty() ? "" : ", ", row.name);
    }
    return "A scenario is a file of JSON text: devices, and what happens when.\n\n"
           "  {\"version\": 1, \"about\": \"What it shows\", \"seed\": 7,\n"
           "   \"devices\": [{\"type\": \"orvanta3\", \"id\": 1, \"short_id\": \"3001\", \"uuid\": \"...\",\n"
           "      \"configuration\": {\n"
           "        \"gravity_compensation\": {\"enabled\": true, \"scaling_factor\": 0.5},\n"
           "        \"torque_scaling\": {\"enabled\": true}, \"handedness\": \"left\"}}],\n"
           "   \"steps\": [{\"at\": 2000, \"do\": \"plug palmetron\"},\n"
           "             {\"after\": \"open\", \"delay\": 500, \"do\": [\"drop 0.3\", \"unplug 1\"]},\n"
           "             {\"after\": {\"event\": \"request\", \"op\": 66, \"n\": 3}, \"do\": \"quit\"}]}\n\n"
           "Only version is required, and type of a device, do of a step, at or after.\n"
           "  at, delay  milliseconds since the start, since the event\n"
           "  after      " +
           events +
           "\n"
           "  do         verbs of the console, but not wait: --help console\n"
           "Whatever is wrong ends the program before it starts, with path and line.\n"
           "Examples are installed in share/orvanta/scenarios; see orvanta-scenario(5).\n";
}

std::string console_help() {
    return "With --interactive each line of standard input is a verb, and is answered on\n"
           "standard output: with what it shows, with \"ok\" or with \"error: \" and why.\n"
           "On a terminal \"> \" asks for the next line and Ctrl-D quits. A script, as in\n"
           "  printf 'wait 2000\\nunplug 1\\n' | orvanta-simulator --interactive\n"
           "may end; the service goes on. Lines that begin with # do nothing.\n" +
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
    if (const fault_row* row = find_fault(topic)) {
        return fault_help(*row);
    }
    if (find_verb(topic) != nullptr) {
        return verb_help_text(topic);
    }
    return std::nullopt;
}

} // namespace vantu::orvanta::simulator
