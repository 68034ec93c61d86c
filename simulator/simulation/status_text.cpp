// The texts that the console shows: the state of a simulation, and help on the verbs.
#include "network/socket.hpp"
#include "shared/datagram_text.hpp"
#include "simulator/simulation/verb_syntax.hpp"
#include "simulator/simulation/verbs.hpp"
#include "vantu/orvanta/common/format.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace vantu::orvanta::simulator {
namespace {

std::string client_line(const client& one, std::uint64_t number, std::int64_t now_ns) {
    std::string devices;
    for (const open_device& opened : one.opened) {
        devices += formatted(" {}", opened.id);
    }
    return formatted("  {} client {} '{}' at {}, opened{}, heard {:.3f} s ago\n", number, one.id, one.name,
                     address_text(one.address), devices.empty() ? " nothing" : devices,
                     seconds_of(now_ns - one.last_heard_ns));
}

std::string device_line(const device& one) {
    const unsigned short_id = one.description.short_id;
    if (!one.is_orvanta3()) {
        return formatted("  {} palmetron {:04X}\n", one.id, short_id);
    }
    const configuration& settings = one.settings;
    return formatted("  {} orvanta3 {:04X}, gravity compensation {} {}, torque scaling {}, {}-handed\n",
                     one.id, short_id, settings.gravity_compensation ? "on" : "off", settings.scaling_factor,
                     settings.torque_scaling ? "on" : "off",
                     settings.handedness == vantu_orvanta_handedness_left ? "left" : "right");
}

std::string conditions_text() {
    std::string text = "Conditions, each with = N, >= N or <= N, else it is >= 1:\n";
    for (const condition_row& row : conditions) {
        text += formatted("  {:<16}{:<42}{}\n", formatted("{} {}", row.name, row.subject), row.counted,
                          row.example);
    }
    return text;
}

std::string overview() {
    std::string text = "Faults, each with ARGUMENT@SELECTOR=VALUE,... ('help FAULT'):\n";
    std::string line;
    constexpr std::size_t width = 78;
    for (const fault_row& row : faults) {
        if (line.size() + row.name.size() + 2 > width) {
            text += line + '\n';
            line.clear();
        }
        line += line.empty() ? "  " : " ";
        line += row.name;
    }
    text += line + "\nVerbs:\n";
    for (const verb_row& row : verbs) {
        text += formatted("  {:<35}{}\n", formatted("{} {}", row.name, row.arguments), row.effect);
        if (row.name == "set") {
            text += "  set DEVICE torque on|off\n  set DEVICE handedness left|right\n";
        }
    }
    return text;
}

std::string fault_help_text(const fault_row& row) {
    const argument_row& argument = row_of(row.argument);
    const std::string_view ways = !row.to_client    ? "datagrams from clients"
                                  : !row.to_service ? "datagrams to clients"
                                                    : "datagrams both ways, where no dir= chooses one";
    return formatted("{} {}\n  {}\n\n"
                     "  {:<11} {}\n"
                     "  {:<11} {}\n"
                     "{}"
                     "  {:<11} {} {}\n",
                     row.name, argument.form, row.effect, "argument", argument.meaning, "happens to", ways,
                     row.at_once ? "  at once     as a verb without a selector; as an option, to the first "
                                   "datagram\n"
                                 : "",
                     "example", row.name, row.example);
}

} // namespace

// Without the zero character that counts as part of it.
std::string address_text(const peer& of) {
    std::string text = stringify_addr(of.address);
    std::erase(text, '\0');
    return text;
}

std::string status_text(const simulation& target) {
    const simulation_counters& counters = target.counters();
    std::string text = formatted("seed {}, tick {}, {:.3f} s\n", target.seed(),
                                 target.now_ns() / simulation_tick_ns, seconds_of(target.now_ns()));
    text += formatted("datagrams received {}, sent {}; restarts {}\n", counters.received, counters.sent,
                      counters.restarts);
    text += formatted("clients {}\n", target.clients().size());
    for (const client& one : target.clients()) {
        text += client_line(one, target.number_of(one), target.now_ns());
    }
    text += formatted("devices {}\n", target.devices().size());
    for (const device& one : target.devices()) {
        text += device_line(one);
    }
    const auto active = target.faults().rules();
    text += formatted("faults {}\n", active.size());
    for (rule_state state : active) {
        const std::string name = std::exchange(state.rule.name, {});
        text +=
            formatted("  {} {}: fits {}, happened {}\n", name.empty() ? std::to_string(state.number) : name,
                      text_of(state.rule), state.fitted, state.happened);
    }
    for (const fault_row& row : faults) {
        if (const auto times = target.faults().happened(row.kind); times != 0) {
            text += formatted("{} happened {} in all\n", row.name, times);
        }
    }
    return text;
}

std::string note_text(const fault_note& note) {
    return formatted(
        "{}: {} {} {} client {}", note.rule, row_of(note.kind).did, datagram_text(note.bytes, note.way),
        note.way == communication::direction::to_client ? "to" : "from", address_text(note.with));
}

std::string verb_help_text(std::string_view verb) {
    if (const fault_row* const fault = find_fault(verb); fault != nullptr) {
        return fault_help_text(*fault);
    }
    const verb_row* const row = find_verb(verb);
    if (row == nullptr) {
        return overview();
    }
    std::string text = formatted("{}: {}\n", row->name, row->effect);
    text += formatted("  {} {}", row->name, row->example);
    text.erase(text.find_last_not_of(' ') + 1);
    text += row->name == "set" ? "\n  set 1 torque off\n  set 1 handedness left\n" : "\n";
    if (row->name == "expect" || row->name == "wait") {
        text += row->name == "wait" ? "  wait 500 out config_save = 2\n" : "";
        text += conditions_text();
    }
    return text;
}

} // namespace vantu::orvanta::simulator
