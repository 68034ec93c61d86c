// Which datagrams a rule fits, and when its fault happens to one.
#include "simulator/faults/fault_pipeline.hpp"

#include <algorithm>

namespace vantu::orvanta::simulator {

using namespace communication;

namespace {

// A request that the service carries out on a device.
bool names_a_device(std::uint8_t code) {
    const operation* const row = find_operation(code, direction::to_service);
    return row != nullptr && row->body_size != 0 && code != op_code::connect;
}

bool has(std::span<const std::byte> bytes, std::uint8_t code) {
    return find_operation_in(bytes, code).has_value();
}

} // namespace

std::optional<operation_place> fault_pipeline::refused_operation(const fault_rule& rule,
                                                                 std::span<const std::byte> bytes) {
    for (const operation_place& place : operations_in(bytes)) {
        const bool eligible =
            rule.kind == fault_kind::refuse
                ? place.code == op_code::connect
                : names_a_device(place.code) && (!rule.code.has_value() || place.code == *rule.code);
        if (eligible) {
            return place;
        }
    }
    return std::nullopt;
}

bool fault_pipeline::fits(const fault_rule& rule, const piped_datagram& what) const {
    const fault_row& row = row_of(rule.kind);
    if ((in_action_ && row.act == fault_act::action) || (what.is_copy && row.act == fault_act::copies)) {
        return false;
    }
    if (rule.way.has_value() ? *rule.way != what.way
                             : !(what.way == direction::to_service ? row.to_service : row.to_client)) {
        return false;
    }
    if (rule.code.has_value() && !has(what.bytes, *rule.code)) {
        return false;
    }
    switch (rule.kind) {
    case fault_kind::late:
    case fault_kind::retag:
    case fault_kind::readdress:
    case fault_kind::stale:
        return what.answer.has_value() && (!rule.code.has_value() || *rule.code == *what.answer);
    case fault_kind::refuse:
    case fault_kind::error:
        return refused_operation(rule, what.bytes).has_value();
    case fault_kind::short_acceptance:
        return has(what.bytes, op_code::connected);
    case fault_kind::goodbye:
        return !has(what.bytes, op_code::disconnected);
    case fault_kind::drop:
    case fault_kind::duplicate:
    case fault_kind::reorder:
    case fault_kind::delay:
    case fault_kind::truncate:
    case fault_kind::extend:
    case fault_kind::oversize:
    case fault_kind::empty:
    case fault_kind::flip:
    case fault_kind::bad_magic:
    case fault_kind::bad_version:
    case fault_kind::bad_operation:
    case fault_kind::unknown_operation:
    case fault_kind::lying_operation:
    case fault_kind::short_body:
    case fault_kind::bad_between:
    case fault_kind::flood:
    case fault_kind::silence:
    case fault_kind::restart:
    case fault_kind::unplug:
    case fault_kind::plug:
    case fault_kind::inject:
        break;
    }
    return true;
}

bool fault_pipeline::is_its_turn(live_rule& rule) {
    const rule_state& state = rule.state;
    return state.rule.nth != 0 ? state.fitted == state.rule.nth : rule.chance.happens(state.rule.probability);
}

void fault_pipeline::count(live_rule& rule, const piped_datagram& what) {
    if (told_) {
        told_({text_of(rule.state.rule), what.way, what.with, what.bytes});
    }
    ++rule.state.happened;
    ++happened_[static_cast<std::size_t>(rule.state.rule.kind)];
}

} // namespace vantu::orvanta::simulator
