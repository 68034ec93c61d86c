#include "simulator/control/json_answers.hpp"

#include "shared/text_lines.hpp"
#include "simulator/faults/faults.hpp"
#include "vantu/orvanta/common/format.hpp"

#include <chrono>
#include <nlohmann/json.hpp>

namespace vantu::orvanta {

using json = nlohmann::ordered_json;

// The JSON library finds these by the types' namespace.
static void to_json(json& document, const service_simulator::client& one) {
    const auto milliseconds = [](std::chrono::nanoseconds time) {
        return std::chrono::duration<double, std::milli>(time).count();
    };
    document = {{"number", one.number},
                {"id", one.id},
                {"name", one.name},
                {"address", one.address},
                {"opened", one.opened},
                {"keep_alive_ms", milliseconds(one.keep_alive)},
                {"silent_for_ms", milliseconds(one.silent_for)}};
}

static void to_json(json& document, const service_simulator::configuration& one) {
    // 0.3 in place of the 0.30000001192092896 that it is.
    const json factor = json::parse(formatted("{}", one.scaling_factor));
    document = {{"gravity_compensation", {{"enabled", one.gravity_compensation}, {"scaling_factor", factor}}},
                {"torque_scaling", {{"enabled", one.torque_scaling}}},
                {"handedness", one.left_handed ? "left" : "right"}};
}

static void to_json(json& document, const service_simulator::device& one) {
    const bool configured = one.type == service_simulator::device_type::orvanta3;
    document = {{"id", one.id},
                {"type", configured ? "orvanta3" : "palmetron"},
                {"short_id", formatted("{:04X}", one.short_id)},
                {"uuid", one.uuid},
                {"configuration", configured ? json(one.configured) : json(nullptr)},
                {"opened_by", one.opened_by},
                {"requests", one.requests},
                {"states", one.states}};
}

static void to_json(json& document, const service_simulator::rule& one) {
    document = {{"number", one.number},
                {"name", one.name},
                {"text", one.text},
                {"fitted", one.fitted},
                {"happened", one.happened}};
}

namespace simulator {
namespace {

std::string_view without_last_line_feed(std::string_view text) {
    text.remove_suffix(text.ends_with('\n') ? 1 : 0);
    return text;
}

json state_of(const service_simulator& service) {
    const service_simulator::counters counted = service.count();
    json happened = json::object();
    for (const fault_row& row : faults) {
        if (const auto times = service.happened(row.name); times != 0) {
            happened[std::string(row.name)] = times;
        }
    }
    return {{"seed", service.seed()},         {"ticks", service.now().count() / simulation_tick_ns},
            {"received", counted.received},   {"sent", counted.sent},
            {"restarts", counted.restarts},   {"clients", service.clients()},
            {"devices", service.devices()},   {"rules", service.rules()},
            {"happened", std::move(happened)}};
}

// Names of clients need not be UTF-8.
std::string line_of(const json& document) {
    return document.dump(-1, ' ', false, json::error_handler_t::replace) + '\n';
}

} // namespace

std::string json_answer(const service_simulator& service, std::string_view line, const verb_result& result) {
    const std::string_view text = without_last_line_feed(result.text);
    if (!result.good) {
        return line_of({{"ok", false}, {"error", text}});
    }
    json answer{{"ok", true}, {"text", text}};
    if (take_word(line) == "status") {
        answer["status"] = state_of(service);
    }
    return line_of(answer);
}

std::string json_shown(std::string_view text) {
    return line_of({{"shown", without_last_line_feed(text)}});
}

} // namespace simulator
} // namespace vantu::orvanta
