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

std::int64_t milliseconds_of(const located_value& value, const std::string& place, std::uint64_t least = 0) {
    return static_cast<std::int64_t>(require_whole(value, place, least, greatest_ms)) * ns_per_millisecond;
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

// A verb as it is checked and kept.
std::string verb_of(const located_value& value, const std::string& place, bool for_each_client) {
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
    const std::string wrong = check_verb(for_each_client ? verb_for_client(line, 1) : line);
    if (!wrong.empty()) {
        throw located_error(value.line, formatted("{}: {}", place, wrong));
    }
    return line;
}

// Members that go with no other, or only with another.
void check_members(const located_value& value, const std::string& place) {
    const auto find = [&value](std::string_view member) { return value.find(member); };
    if ((find("at") == nullptr) == (find("after") == nullptr)) {
        throw located_error(value.line, formatted("{} has {}; one of the two would be right", place,
                                                  find("at") == nullptr ? R"(neither "at" nor "after")"
                                                                        : R"(both "at" and "after")"));
    }
    struct pair {
        std::string_view member;
        std::string_view needed;
    };
    for (const pair& one : {pair{"delay", "after"}, pair{"each", "after"}, pair{"times", "every"}}) {
        if (const located_value* found = find(one.member); found != nullptr && find(one.needed) == nullptr) {
            throw located_error(found->name_line,
                                formatted(R"({0} has "{1}" without "{2}"; "{1}" belongs to "{2}")", place,
                                          one.member, one.needed));
        }
    }
    if (find("each") != nullptr && find("every") != nullptr) {
        throw located_error(find("each")->name_line,
                            place + R"( has "each" and "every"; one of the two would be right)");
    }
}

scenario_step step_of(const located_value& value, const std::string& place, bool for_each_client) {
    require_object(value, place, scenario_members::step);
    check_members(value, place);
    scenario_step step;
    if (const located_value* at = value.find("at")) {
        step.due_ns = milliseconds_of(*at, place + " at");
    }
    if (const located_value* after = value.find("after")) {
        step.after = trigger_of(*after, place + " after");
    }
    if (const located_value* delay = value.find("delay")) {
        step.due_ns = milliseconds_of(*delay, place + " delay");
    }
    if (const located_value* each = value.find("each")) {
        step.after->each = require_flag(*each, place + " each");
    }
    if (const located_value* every = value.find("every")) {
        step.every_ns = milliseconds_of(*every, place + " every", 1);
    }
    if (const located_value* times = value.find("times")) {
        step.times = require_whole(*times, place + " times", 1, std::numeric_limits<std::uint32_t>::max());
    }
    const located_value& verbs = required_member(value, place, "do");
    const std::vector<located_value> alone{verbs};
    for (const located_value& verb : verbs.kind == json_kind::array ? verbs.items : alone) {
        step.verbs.push_back(verb_of(verb, place + " do", for_each_client));
    }
    if (step.verbs.empty()) {
        throw located_error(verbs.line, place + " do is empty; a verb or an array of verbs would be right");
    }
    return step;
}

} // namespace

std::vector<scenario_step> read_scenario_steps(const located_value& list, bool for_each_client) {
    std::vector<scenario_step> steps;
    for (const located_value& step : require_array(list, "steps")) {
        steps.push_back(step_of(step, formatted("step {}", steps.size() + 1), for_each_client));
    }
    return steps;
}

std::string verb_for_client(std::string verb, std::uint64_t number) {
    constexpr std::string_view word = "this";
    for (auto at = verb.find(word); at != std::string::npos; at = verb.find(word, at + 1)) {
        const std::string_view before = std::string_view(verb).substr(0, at);
        const std::string_view after = std::string_view(verb).substr(at + word.size());
        if ((before.ends_with("client=") || before.ends_with('-')) &&
            (after.empty() || after.front() == ',' || after.front() == ' ')) {
            verb.replace(at, word.size(), std::to_string(number));
        }
    }
    return verb;
}

} // namespace vantu::orvanta::simulator
