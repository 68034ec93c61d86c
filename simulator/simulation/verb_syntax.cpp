#include "simulator/simulation/verb_syntax.hpp"

#include "shared/near_word.hpp"
#include "shared/text_lines.hpp"
#include "vantu/orvanta/common/format.hpp"

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace vantu::orvanta::simulator {
namespace {

// "'VERB WORD' or " where a word is near, else nothing.
std::string near_line(std::string_view verb, std::string_view typed,
                      std::span<const std::string_view> words) {
    const std::string_view nearest = near_word(typed, words);
    return nearest.empty() ? std::string() : formatted("'{} {}' or ", verb, nearest);
}

[[noreturn]] void refuse(const std::string& what) {
    throw std::invalid_argument(what);
}

constexpr auto all_names = [] {
    std::array<std::string_view, faults.size() + verbs.size()> names;
    for (std::size_t i = 0; i < verbs.size(); ++i) {
        names[i] = verbs[i].name;
    }
    for (std::size_t i = 0; i < faults.size(); ++i) {
        names[verbs.size() + i] = faults[i].name;
    }
    return names;
}();

void expect_end(std::string_view verb, std::string_view rest) {
    if (!rest.empty()) {
        refuse(formatted("{}: '{}' is too much; the line ends before it", verb, rest));
    }
}

bool read_switch(std::string_view verb, std::string_view text) {
    if (text != "on" && text != "off") {
        refuse(formatted("{}: '{}' is neither on nor off, as in 'set 1 {} off'", verb, text, verb));
    }
    return text == "on";
}

void read_gravity(std::string_view rest, set_command& made) {
    made.gravity_compensation = read_switch("gravity", take_word(rest));
    if (const std::string_view text = take_word(rest); !text.empty()) {
        const auto value = real_number(text);
        const auto factor = static_cast<float>(value.value_or(-1));
        if (!is_scaling_factor(factor)) {
            refuse(
                formatted("gravity: '{}' is no scaling factor; it takes a number from 0 to 1, as in 'set 1 "
                          "gravity on 0.5'",
                          text));
        }
        made.scaling_factor = factor;
    }
    expect_end("gravity", rest);
}

std::uint8_t read_handedness(std::string_view rest) {
    const std::string_view side = take_word(rest);
    if (side != "left" && side != "right") {
        refuse(formatted("handedness: '{}' is neither left nor right, as in 'set 1 handedness left'", side));
    }
    expect_end("handedness", rest);
    return side == "left" ? vantu_orvanta_handedness_left : vantu_orvanta_handedness_right;
}

set_command read_set(std::string_view rest) {
    set_command made;
    const std::string_view id = take_word(rest);
    const auto number = whole_number(id);
    if (!number.has_value() || *number > std::numeric_limits<std::uint32_t>::max()) {
        refuse(formatted("set: '{}' is no device id; a whole number would be right, as in 'set 1 gravity on "
                         "0.5'",
                         id));
    }
    made.device_id = static_cast<std::uint32_t>(*number);
    const std::string_view setting = take_word(rest);
    if (setting == "gravity") {
        read_gravity(rest, made);
    } else if (setting == "torque") {
        made.torque_scaling = read_switch("torque", take_word(rest));
        expect_end("torque", rest);
    } else if (setting == "handedness") {
        made.handedness = read_handedness(rest);
    } else {
        refuse(
            formatted("set: '{}' is no setting; gravity, torque or handedness would be right, as in 'set 1 "
                      "torque off'",
                      setting));
    }
    return made;
}

heal_command read_heal(std::string_view rest) {
    const std::string_view name = take_word(rest);
    expect_end("heal", rest);
    if (name.empty()) {
        return {};
    }
    if (const fault_row* const row = find_fault(name); row != nullptr) {
        return {row->kind, {}};
    }
    return {{}, std::string(name)};
}

wait_command read_wait(std::string_view rest) {
    const std::string_view text = take_word(rest);
    const auto milliseconds = whole_number(text);
    if (!milliseconds.has_value() || *milliseconds > longest_wait_ms) {
        refuse(formatted("wait: '{}' is no time; it takes milliseconds from 0 to {}, as in 'wait 250'", text,
                         longest_wait_ms));
    }
    if (rest.empty()) {
        return {*milliseconds, {}};
    }
    return {*milliseconds, parse_condition("wait", rest)};
}

help_command read_help(std::string_view rest) {
    const std::string_view name = take_word(rest);
    expect_end("help", rest);
    const auto* const known = std::find(all_names.begin(), all_names.end(), name);
    if (!name.empty() && known == all_names.end()) {
        refuse(formatted("help: '{}' is no verb; {}'help' alone would be right", name,
                         near_line("help", name, all_names)));
    }
    return {name.empty() ? std::string_view{} : *known};
}

// "; 'LINE' would be right" with the near verb in the place of the typed one, and with that verb's example
// where the line would still be wrong; nothing where no verb is near.
std::string right_line(std::string_view typed, std::string_view rest) {
    const std::string_view nearest = near_word(typed, all_names);
    if (nearest.empty()) {
        return {};
    }
    std::string line(nearest);
    line.append(rest.empty() ? 0 : 1, ' ').append(rest);
    try {
        (void)parse_verb(line);
    } catch (const std::invalid_argument&) {
        const fault_row* const fault = find_fault(nearest);
        line = formatted("{} {}", nearest, fault != nullptr ? fault->example : find_verb(nearest)->example);
    }
    return formatted("; '{}' would be right", line);
}

} // namespace

const verb_row* find_verb(std::string_view name) noexcept {
    const auto* const found =
        std::find_if(verbs.begin(), verbs.end(), [name](const verb_row& row) { return row.name == name; });
    return found != verbs.end() ? found : nullptr;
}

command parse_verb(std::string_view line) {
    std::string_view rest = line;
    const std::string_view verb = take_word(rest);
    if (verb.empty() || verb.front() == '#') {
        return {};
    }
    if (const fault_row* const row = find_fault(verb); row != nullptr) {
        return parse_fault(row->kind, rest);
    }
    if (verb == "set") {
        return read_set(rest);
    }
    if (verb == "heal") {
        return read_heal(rest);
    }
    if (verb == "send") {
        return read_send(rest);
    }
    if (verb == "expect") {
        return expect_command{parse_condition(verb, rest)};
    }
    if (verb == "wait") {
        return read_wait(rest);
    }
    if (verb == "help") {
        return read_help(rest);
    }
    if (verb == "status" || verb == "quit") {
        expect_end(verb, rest);
        return verb == "quit" ? command(quit_command{}) : command(status_command{});
    }
    refuse(formatted("there is no verb '{}'{}; 'help' lists them all", verb, right_line(verb, rest)));
}

} // namespace vantu::orvanta::simulator
