// Reading the steps of a scenario.
#include "shared/located_json.hpp"
#include "shared/text_lines.hpp"
#include "simulator/control/scenario.hpp"
#include "simulator/simulation/verbs.hpp"
#include "vantu/orvanta/common/format.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"

#include <algorithm>
#include <limits>

namespace vantu::orvanta::simulator {
namespace {

constexpr std::uint64_t greatest_ms = 1'000'000'000;

std::int64_t milliseconds_of(const located_value& value, const std::string& place) {
    return static_cast<std::int64_t>(require_whole(value, place, 0, greatest_ms)) * ns_per_millisecond;
}

scenario_event event_named(const located_value& value, const std::string& place) {
    std::array<std::string_view, scenario_events.size()> names;
    std::transform(scenario_events.begin(), scenario_events.end(), names.begin(),
                   [](const scenario_event_row& row) { return row.name; });
    return scenario_events[require_word(value, place, names)].event;
}

std::uint8_t request_code_of(const located_value& value, const std::string& place) {
    for (const communication::operation& row : communication::operations) {
        const bool named = value.kind == json_kind::string && value.string == row.name;
        const bool numbered = value.is_whole && value.whole == row.code;
        if (row.way == communication::direction::to_service && (named || numbered)) {
            return row.code;
        }
    }
    throw located_error(value.line,
                        formatted("{} is {}; the code or the name of an operation that goes to the "
                                  "service would be right, as in 66 or \"config_save\"",
                                  place, description_of(value)));
}

scenario_trigger trigger_of(const located_value& value, const std::string& place) {
    scenario_trigger read;
    if (value.kind != json_kind::object) {
        read.event = event_named(value, place);
        return read;
    }
    require_object(value, place, scenario_members::event);
    read.event = event_named(required_member(value, place, "event"), place + " event");
    if (const located_value* code = value.find("op")) {
        if (read.event != scenario_event::request) {
            throw located_error(code->name_line,
                                formatted("{} has an \"op\"; only the event \"request\" takes one", place));
        }
        read.code = request_code_of(*code, place + " op");
    }
    if (const located_value* nth = value.find("n")) {
        read.nth = require_whole(*nth, place + " n", 1, std::numeric_limits<std::uint32_t>::max());
    }
    return read;
}

void add_verb(const located_value& value, const std::string& place, std::vector<std::string>& verbs) {
    const std::string& line = require_string(value, place, "a verb or an array of verbs");
    std::string_view rest(line);
    const std::string_view verb = take_word(rest);
    if (verb.empty() || verb.front() == '#' || line.find('\n') != std::string::npos) {
        throw located_error(value.line, formatted("{} is {}; a verb would be right, as in \"drop 0.3\"",
                                                  place, description_of(value)));
    }
    if (verb == "wait") {
        throw located_error(
            value.line,
            formatted("{} waits; \"at\" or \"delay\" of a step of its own would be right", place));
    }
    if (const std::string wrong = check_verb(line); !wrong.empty()) {
        throw located_error(value.line, formatted("{}: {}", place, wrong));
    }
    verbs.push_back(line);
}

scenario_step step_of(const located_value& value, const std::string& place) {
    require_object(value, place, scenario_members::step);
    const located_value* at = value.find("at");
    const located_value* after = value.find("after");
    const located_value* delay = value.find("delay");
    if ((at == nullptr) == (after == nullptr)) {
        throw located_error(value.line, formatted("{} has {}; one of the two would be right", place,
                                                  at == nullptr ? R"(neither "at" nor "after")"
                                                                : R"(both "at" and "after")"));
    }
    scenario_step step;
    if (at != nullptr) {
        if (delay != nullptr) {
            throw located_error(delay->name_line,
                                place + R"( has "at" and "delay"; "delay" belongs to "after")");
        }
        step.due_ns = milliseconds_of(*at, place + " at");
    } else {
        step.after = trigger_of(*after, place + " after");
        step.due_ns = delay != nullptr ? milliseconds_of(*delay, place + " delay") : 0;
    }
    const located_value& verbs = required_member(value, place, "do");
    if (verbs.kind == json_kind::array) {
        for (const located_value& verb : verbs.items) {
            add_verb(verb, place + " do", step.verbs);
        }
    } else {
        add_verb(verbs, place + " do", step.verbs);
    }
    if (step.verbs.empty()) {
        throw located_error(verbs.line, place + " do is empty; a verb or an array of verbs would be right");
    }
    return step;
}

} // namespace

std::vector<scenario_step> read_scenario_steps(const located_value& list) {
    std::vector<scenario_step> steps;
    for (const located_value& step : require_array(list, "steps")) {
        steps.push_back(step_of(step, formatted("step {}", steps.size() + 1)));
    }
    return steps;
}

} // namespace vantu::orvanta::simulator
