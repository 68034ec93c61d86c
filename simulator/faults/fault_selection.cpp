// Which datagrams a rule fits, and when its fault happens to one.
#include "simulator/faults/fault_fit.hpp"
#include "simulator/faults/fault_patch.hpp"
#include "simulator/faults/fault_pipeline.hpp"

namespace vantu::orvanta::simulator {

using namespace communication;

namespace {

// A Gilbert model: bursts last for so many on average and come as often as the probability then needs.
bool is_in_burst(const fault_rule& rule, fault_random& chance, bool& in_burst) {
    const auto length = static_cast<double>(rule.burst);
    in_burst = in_burst ? !chance.happens(1 / length)
                        : chance.happens(rule.probability / (length * (1 - rule.probability)));
    return in_burst;
}

} // namespace

bool fault_pipeline::fits(const fault_rule& rule, const piped_datagram& what) {
    const fault_row& row = row_of(rule.kind);
    if ((in_action_ && row.act == fault_act::action) || (what.is_copy && row.act == fault_act::copies) ||
        !goes(rule, what.way)) {
        return false;
    }
    if (rule.client != 0 && rule.client != chances_.number_of(what.with) + 1) {
        return false;
    }
    if ((rule.answers || row.act == fault_act::stale_reply) &&
        (!what.answer || rule.code.value_or(*what.answer) != *what.answer)) {
        return false;
    }
    if (rule.kind == fault_kind::goodbye && find_operation_in(what.bytes, op_code::disconnected)) {
        return false;
    }
    if (rule.kind == fault_kind::patch) {
        return operation_to_patch(rule, what.bytes, what.way).has_value();
    }
    const bool chooses = rule.code || rule.device || row.act == fault_act::refusal;
    return !chooses || chosen_operation(rule, what.bytes, what.way).has_value();
}

bool fault_pipeline::is_its_turn(live_rule& rule) {
    const rule_state& state = rule.state;
    if (state.rule.nth != 0) {
        return state.fitted == state.rule.nth;
    }
    if (state.rule.every != 0) {
        return state.fitted % state.rule.every == 0;
    }
    return state.rule.burst != 0 ? is_in_burst(state.rule, rule.draw.chance, *rule.draw.in_burst)
                                 : rule.draw.chance.happens(state.rule.probability);
}

void fault_pipeline::count(live_rule& rule, const piped_datagram& what) {
    if (!told_.empty()) {
        const std::string text = text_of(rule.state.rule);
        for (const note_function& told : told_) {
            told({text, rule.state.rule.kind, what.way, what.with, what.bytes});
        }
    }
    ++rule.state.happened;
    ++happened_[static_cast<std::size_t>(rule.state.rule.kind)];
}

} // namespace vantu::orvanta::simulator
