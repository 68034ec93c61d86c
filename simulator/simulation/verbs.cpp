#include "simulator/simulation/verbs.hpp"

#include "shared/near_word.hpp"
#include "shared/text_lines.hpp"
#include "simulator/simulation/verb_syntax.hpp"
#include "vantu/orvanta/common/format.hpp"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

namespace vantu::orvanta::simulator {
namespace {

verb_result bad(const std::string& text) {
    return {false, false, without_control_characters(text)};
}

std::vector<std::uint32_t> ids_of(const simulation& target) {
    std::vector<std::uint32_t> ids;
    for (const device& one : target.devices()) {
        ids.push_back(one.id);
    }
    return ids;
}

verb_result no_such_device(const simulation& target, std::uint32_t id) {
    const auto ids = ids_of(target);
    if (ids.empty()) {
        return bad(formatted("there is no device {}, nor any other; 'plug orvanta3' brings one", id));
    }
    std::string known;
    for (const std::uint32_t one : ids) {
        known += formatted("{}{}", known.empty() ? "" : " or ", one);
    }
    return bad(formatted("there is no device {}; {} would be right", id, known));
}

const device* find(const simulation& target, std::uint32_t id) {
    const auto found = std::find_if(target.devices().begin(), target.devices().end(),
                                    [id](const device& one) { return one.id == id; });
    return found != target.devices().end() ? &*found : nullptr;
}

verb_result plug_now(simulation& target, const fault_rule& rule) {
    const auto before = ids_of(target);
    target.add_fault(rule);
    for (const std::uint32_t id : ids_of(target)) {
        if (std::find(before.begin(), before.end(), id) == before.end()) {
            return {true, false, formatted("plugged in {}\n", id)};
        }
    }
    return bad("there can be no more devices of this type; 'unplug' makes room");
}

verb_result unplug_now(simulation& target, const fault_rule& rule) {
    const auto ids = ids_of(target);
    if (rule.first.has_value() ? find(target, *rule.first) == nullptr : ids.empty()) {
        return no_such_device(target, rule.first.value_or(1));
    }
    const std::uint32_t id = rule.first.value_or(ids.front());
    target.add_fault(rule);
    return {true, false, formatted("unplugged {}\n", id)};
}

bool is_for_clients(fault_kind kind) {
    return kind == fault_kind::flood || kind == fault_kind::inject || kind == fault_kind::error;
}

verb_result run(simulation& target, const fault_rule& rule) {
    if (rule.now && rule.kind == fault_kind::plug) {
        return plug_now(target, rule);
    }
    if (rule.now && rule.kind == fault_kind::unplug) {
        return unplug_now(target, rule);
    }
    if (rule.now && is_for_clients(rule.kind) && target.clients().empty()) {
        return bad(
            formatted("nobody is connected; '{}@nth=1' would wait for the first datagram", text_of(rule)));
    }
    target.add_fault(rule);
    return {};
}

verb_result run(simulation& target, const set_command& wanted) {
    const device* const which = find(target, wanted.device_id);
    if (which == nullptr) {
        return no_such_device(target, wanted.device_id);
    }
    if (!which->is_orvanta3()) {
        return bad(formatted("device {} is a Palmetron, which has no settings; an Orvanta3 would be right",
                             which->id));
    }
    const configuration& now = which->settings;
    (void)target.configure(which->id, {wanted.gravity_compensation.value_or(now.gravity_compensation),
                                       wanted.scaling_factor.value_or(now.scaling_factor),
                                       wanted.torque_scaling.value_or(now.torque_scaling),
                                       wanted.handedness.value_or(now.handedness)});
    return {};
}

verb_result no_such_rule(const simulation& target, std::string_view rule) {
    const auto states = target.faults().rules();
    std::vector<std::string_view> words;
    words.reserve(states.size() + faults.size());
    for (const rule_state& state : states) {
        words.push_back(state.rule.name);
    }
    for (const fault_row& row : faults) {
        words.push_back(row.name);
    }
    const std::string_view nearest = near_word(rule, words);
    return bad(formatted("heal: there is no rule '{}'; 'heal{}{}' would be right", rule,
                         nearest.empty() ? "" : " ", nearest));
}

verb_result run(simulation& target, const heal_command& wanted) {
    if (wanted.kind.has_value()) {
        target.faults().heal(*wanted.kind);
    } else if (wanted.rule.empty()) {
        target.faults().heal();
    } else if (!target.faults().heal(wanted.rule)) {
        return no_such_rule(target, wanted.rule);
    }
    return {};
}

verb_result run(simulation& target, const send_command& wanted) {
    const std::vector<client>& all = target.clients();
    if (all.empty()) {
        return bad("send: nobody is connected; a step after an event, as \"connect\", would be right");
    }
    std::vector<peer> to;
    std::string known;
    for (const client& one : all) {
        const std::uint64_t number = target.number_of(one);
        known += formatted("{}{}", known.empty() ? "" : " or ", number);
        if (wanted.client == 0 || wanted.client == number) {
            to.push_back(one.address);
        }
    }
    if (to.empty()) {
        return bad(formatted("send: there is no client {}; {} would be right, as 'status' numbers them",
                             wanted.client, known));
    }
    for (const peer& one : to) {
        target.send(one, wanted.datagram);
    }
    return {};
}

verb_result run(simulation& target, const status_command& /*unused*/) {
    return {true, false, status_text(target)};
}

verb_result run(simulation& /*unused*/, const help_command& wanted) {
    return {true, false, verb_help_text(wanted.verb)};
}

verb_result run(simulation& /*unused*/, const quit_command& /*unused*/) {
    return {true, true, {}};
}

verb_result run(simulation& target, const expect_command& asked) {
    const std::string missing = unmet(asked.wanted, target);
    return missing.empty() ? verb_result{} : bad(formatted("{}{}", unmet_begin, missing));
}

// The reader of the lines waits.
verb_result run(simulation& /*unused*/, const wait_command& /*unused*/) {
    return {};
}

verb_result run(simulation& /*unused*/, std::monostate /*unused*/) {
    return {};
}

} // namespace

verb_result run_verb(simulation& target, std::string_view line) {
    try {
        return std::visit([&target](const auto& wanted) { return run(target, wanted); }, parse_verb(line));
    } catch (const std::invalid_argument& wrong) {
        return bad(wrong.what());
    }
}

std::string check_verb(std::string_view line) {
    try {
        (void)parse_verb(line);
        return {};
    } catch (const std::invalid_argument& wrong) {
        return without_control_characters(wrong.what());
    }
}

} // namespace vantu::orvanta::simulator
