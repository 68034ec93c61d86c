// The way of a datagram through the stage: which rules it meets, and what it suffers from them.
#include "simulator/faults/datagram_view.hpp"
#include "simulator/faults/fault_engine.hpp"
#include "simulator/faults/fault_forgeries.hpp"
#include "simulator/service/requests.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"

#include <algorithm>
#include <utility>

namespace vantu::orvanta::simulator {

using namespace communication;

namespace {

constexpr std::int64_t longest_reorder_ns = 100 * ns_per_millisecond;

// More than these wait nowhere: what comes beyond is lost, as where a system's buffers are full.
constexpr std::size_t most_waiting = 300'000;

// A request that the service carries out on a device.
bool names_a_device(std::uint8_t code) {
    const operation* const row = find_operation(code, direction::to_service);
    return row != nullptr && row->body_size != 0 && code != op_code::connect;
}

// The operation that a refusal takes out of a datagram.
std::optional<operation_place> refused_operation(const fault_rule& rule, std::span<const std::byte> bytes) {
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

bool has(std::span<const std::byte> bytes, std::uint8_t code) {
    return find_operation_in(bytes, code).has_value();
}

// Milliseconds from `first` to `last`, where there is a last.
std::int64_t drawn_time_ns(const fault_rule& rule, fault_random& chance) {
    const std::uint32_t least = rule.first.value_or(0);
    const std::uint64_t drawn = chance.between(least, std::max(least, rule.last.value_or(least)));
    return static_cast<std::int64_t>(drawn) * ns_per_millisecond;
}

} // namespace

bool fault_stage::implementation::fits(const fault_rule& rule, const traveller& what) const {
    const fault_row& row = row_of(rule.kind);
    if (in_action && row.act == fault_act::action) {
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

bool fault_stage::implementation::is_its_turn(live_rule& rule) {
    const rule_state& state = rule.state;
    return state.rule.nth != 0 ? state.fitted == state.rule.nth : rule.chance.happens(state.rule.probability);
}

void fault_stage::implementation::count(live_rule& rule) {
    ++rule.state.happened;
    ++happened_[static_cast<std::size_t>(rule.state.rule.kind)];
}

void fault_stage::implementation::travel(traveller what, std::size_t next_rule) {
    for (std::size_t i = next_rule; i < rules_.size(); ++i) {
        live_rule& rule = rules_[i];
        const direction way = what.way;
        const peer with = what.with;
        const bool fitting = fits(rule.state.rule, what);
        rule.state.fitted += fitting ? 1 : 0;
        if (fitting && is_its_turn(rule) && !is_holding_one_of(rule, what)) {
            suffer(rule, std::move(what), i + 1);
            return;
        }
        if (is_holding_one_of(rule, what)) {
            travel(std::move(what), i + 1);
            let_one_pass(rule, way, with, i + 1);
            return;
        }
    }
    leave(std::move(what));
}

void fault_stage::implementation::leave(traveller&& what) {
    if (is_silent()) {
        return;
    }
    if (what.way == direction::to_service && arrivals.size() < most_waiting) {
        arrivals.push_back({what.with, std::move(what.bytes)});
    } else if (what.way == direction::to_client && departures.size() < most_waiting) {
        departures.push_back({what.with, std::move(what.bytes), false});
    }
}

void fault_stage::implementation::suffer(live_rule& rule, traveller what, std::size_t next_rule) {
    switch (row_of(rule.state.rule.kind).act) {
    case fault_act::datagram_change:
    case fault_act::operation_change:
        return send_changed(rule, std::move(what), next_rule);
    case fault_act::loss:
        return count(rule);
    case fault_act::copies:
        return send_with_copies(rule, what, next_rule);
    case fault_act::overtaking:
        return hold(rule, std::move(what), longest_reorder_ns, rule.state.rule.first);
    case fault_act::delay:
        return hold_for_a_while(rule, std::move(what), next_rule);
    case fault_act::stale_reply:
        return send_behind_stale_answer(rule, std::move(what), next_rule);
    case fault_act::silence:
        count(rule);
        return fall_silent(rule.state.rule, rule.chance);
    case fault_act::refusal:
        return refuse_operation(rule, std::move(what), next_rule);
    case fault_act::action:
        return send_with_action(rule, std::move(what), next_rule);
    case fault_act::forgery:
        return send_with_forgeries(rule, std::move(what), next_rule);
    }
}

void fault_stage::implementation::send_changed(live_rule& rule, traveller&& what, std::size_t next_rule) {
    const fault_rule& wanted = rule.state.rule;
    const bool is_about_answer = wanted.kind == fault_kind::retag || wanted.kind == fault_kind::readdress;
    if (mutate(what.bytes, {wanted.kind, is_about_answer ? what.answer : wanted.code, wanted.first},
               rule.chance)) {
        count(rule);
    }
    travel(std::move(what), next_rule);
}

bool fault_stage::implementation::is_holding_one_of(const live_rule& rule, const traveller& what) const {
    return rule.state.rule.kind == fault_kind::reorder &&
           std::any_of(held_.begin(), held_.end(), [&](const held_datagram& one) {
               return one.by == rule.ordinal && one.what.way == what.way &&
                      same_peer(one.what.with, what.with);
           });
}

void fault_stage::implementation::hold(live_rule& rule, traveller&& what, std::int64_t for_ns,
                                       std::optional<std::uint32_t> to_pass) {
    count(rule);
    if (held_.size() < most_waiting) {
        held_.push_back({std::move(what), rule.ordinal, now_ns_ + for_ns, to_pass});
    }
}

void fault_stage::implementation::hold_for_a_while(live_rule& rule, traveller&& what, std::size_t next_rule) {
    const std::int64_t time_ns = drawn_time_ns(rule.state.rule, rule.chance);
    if (time_ns == 0) {
        return travel(std::move(what), next_rule);
    }
    hold(rule, std::move(what), time_ns, std::nullopt);
}

void fault_stage::implementation::let_one_pass(const live_rule& rule, direction way, const peer& with,
                                               std::size_t next_rule) {
    const auto found = std::find_if(held_.begin(), held_.end(), [&](const held_datagram& one) {
        return one.by == rule.ordinal && one.what.way == way && same_peer(one.what.with, with);
    });
    if (found == held_.end() || --*found->to_pass != 0) {
        return;
    }
    held_datagram passed = std::move(*found);
    held_.erase(found);
    travel(std::move(passed.what), next_rule);
}

void fault_stage::implementation::send_with_copies(live_rule& rule, const traveller& what,
                                                   std::size_t next_rule) {
    count(rule);
    traveller copy = what;
    if (rule.state.rule.kind == fault_kind::flood) {
        copy.bytes = idle_acknowledgement();
        copy.answer.reset();
    }
    travel(what, next_rule);
    for (std::uint32_t i = 0; i < rule.state.rule.first.value_or(0); ++i) {
        travel(copy, next_rule);
    }
}

void fault_stage::implementation::send_behind_stale_answer(live_rule& rule, traveller&& what,
                                                           std::size_t next_rule) {
    const datagram_bytes* const earlier = conversations_.earlier_answer(what.with, what.answer.value_or(0));
    if (earlier != nullptr) {
        count(rule);
        travel({what.way, what.with, *earlier, std::nullopt}, next_rule);
    }
    travel(std::move(what), next_rule);
}

void fault_stage::implementation::refuse_operation(live_rule& rule, traveller&& what, std::size_t next_rule) {
    const fault_rule& wanted = rule.state.rule;
    const auto place = refused_operation(wanted, what.bytes);
    if (!place.has_value()) {
        return travel(std::move(what), next_rule);
    }
    count(rule);
    const std::span<const std::byte> bytes(what.bytes);
    const std::uint32_t device =
        place->code == op_code::connect ? 0 : named_device(bytes.subspan(place->body(), place->body_size));
    const auto tag = static_cast<std::uint8_t>(wanted.last.value_or(place->tag));
    traveller refusal{direction::to_client, what.with,
                      refusal_of(tag, device, static_cast<std::uint8_t>(wanted.first.value_or(0))),
                      std::nullopt};
    refusal.answer = conversations_.note_answers(what.with, refusal.bytes);
    const auto begin = what.bytes.begin();
    what.bytes.erase(begin + static_cast<std::ptrdiff_t>(place->record),
                     begin + static_cast<std::ptrdiff_t>(place->end()));
    if (what.bytes.size() > sizeof(proto::header)) {
        travel(std::move(what), next_rule);
    }
    travel(std::move(refusal), next_rule);
}

void fault_stage::implementation::send_with_action(live_rule& rule, traveller&& what, std::size_t next_rule) {
    const fault_rule& wanted = rule.state.rule;
    const auto client = wanted.kind == fault_kind::goodbye ? std::optional<peer>(what.with) : std::nullopt;
    count(rule);
    travel(std::move(what), next_rule);
    actions.push_back({wanted.kind, wanted.first, client});
}

void fault_stage::implementation::send_with_forgeries(live_rule& rule, traveller&& what,
                                                      std::size_t next_rule) {
    const peer with = what.with;
    count(rule);
    travel(std::move(what), next_rule);
    forge(with, rule.state.rule.first.value_or(0));
}

void fault_stage::implementation::fall_silent(const fault_rule& rule, fault_random& chance) {
    silent_until_ns_ = std::max(silent_until_ns_, now_ns_ + drawn_time_ns(rule, chance));
}

void fault_stage::implementation::forge(const peer& to, std::uint32_t how_many) {
    for (std::uint32_t i = 0; i < how_many && departures.size() < most_waiting; ++i) {
        departures.push_back({to, forged_datagram(i), true});
    }
}

} // namespace vantu::orvanta::simulator
