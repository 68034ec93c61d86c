#include "simulator/faults/fault_pipeline.hpp"

#include "simulator/service/clients.hpp"

#include <algorithm>
#include <iterator>
#include <utility>

namespace vantu::orvanta::simulator {

using communication::direction;

namespace {

// Earlier than all times: due whatever the time is.
constexpr std::int64_t at_once_ns = std::numeric_limits<std::int64_t>::min();

} // namespace

void fault_pipeline::add(const fault_rule& rule, std::span<const peer> clients, std::int64_t now_ns) {
    now_ns_ = now_ns;
    const std::uint64_t ordinal = ordinals_++;
    if (rule.now) {
        act_at_once(rule, clients);
    } else {
        rules_.push_back({{rule, 0, 0}, ordinal, fault_random(seed_, ordinal)});
    }
}

void fault_pipeline::heal() {
    heal_rules(std::nullopt);
}

void fault_pipeline::heal(fault_kind kind) {
    heal_rules(kind);
}

void fault_pipeline::heal_rules(std::optional<fault_kind> kind) {
    const auto heals = [kind](const live_rule& rule) {
        return !kind.has_value() || rule.state.rule.kind == *kind;
    };
    for (held_datagram& one : held_) {
        const auto holder = std::find_if(rules_.begin(), rules_.end(),
                                         [&one](const live_rule& rule) { return rule.ordinal == one.by; });
        if (holder == rules_.end() || heals(*holder)) {
            one.due_ns = at_once_ns;
        }
    }
    std::erase_if(rules_, heals);
    if (!kind.has_value() || *kind == fault_kind::silence) {
        silent_until_ns_ = at_once_ns;
    }
}

void fault_pipeline::from_socket(const peer& from, std::span<const std::byte> bytes, std::int64_t now_ns) {
    now_ns_ = now_ns;
    if (is_silent()) {
        return;
    }
    conversations_.note_requests(from, bytes);
    run({direction::to_service, from, {bytes.begin(), bytes.end()}, std::nullopt}, 0);
}

void fault_pipeline::from_service(const outgoing_datagram& datagram, std::int64_t now_ns) {
    now_ns_ = now_ns;
    if (is_silent()) {
        return;
    }
    const std::span<const std::byte> bytes(datagram.bytes.unread(), datagram.bytes.read_len());
    const auto answer = conversations_.note_answers(datagram.to, bytes);
    run({direction::to_client, datagram.to, {bytes.begin(), bytes.end()}, answer}, 0);
}

std::size_t fault_pipeline::first_rule_after(std::uint64_t ordinal) const {
    const auto found = std::find_if(rules_.begin(), rules_.end(),
                                    [ordinal](const live_rule& rule) { return rule.ordinal > ordinal; });
    return static_cast<std::size_t>(found - rules_.begin());
}

void fault_pipeline::tick(std::int64_t now_ns) {
    now_ns_ = now_ns;
    const auto is_later = [now_ns](const held_datagram& one) { return one.due_ns > now_ns; };
    const auto first_due = std::stable_partition(held_.begin(), held_.end(), is_later);
    std::vector<held_datagram> due(std::make_move_iterator(first_due), std::make_move_iterator(held_.end()));
    held_.erase(first_due, held_.end());
    std::stable_sort(due.begin(), due.end(), [](const held_datagram& left, const held_datagram& right) {
        return left.due_ns < right.due_ns;
    });
    for (held_datagram& one : due) {
        run(std::move(one.what), first_rule_after(one.by));
    }
}

std::int64_t fault_pipeline::next_due_ns() const noexcept {
    std::int64_t soonest = never_ns;
    for (const held_datagram& one : held_) {
        soonest = std::min(soonest, one.due_ns);
    }
    return soonest;
}

std::vector<rule_state> fault_pipeline::rules() const {
    std::vector<rule_state> states;
    states.reserve(rules_.size());
    for (const live_rule& rule : rules_) {
        states.push_back(rule.state);
    }
    return states;
}

void fault_pipeline::run(piped_datagram what, std::size_t next_rule) {
    for (std::size_t i = next_rule; i < rules_.size(); ++i) {
        live_rule& rule = rules_[i];
        const direction way = what.way;
        const peer with = what.with;
        const bool fitting = fits(rule.state.rule, what);
        rule.state.fitted += fitting ? 1 : 0;
        if (fitting && is_its_turn(rule) && !is_holding_one_of(rule, what)) {
            apply(rule, std::move(what), i + 1);
            return;
        }
        if (is_holding_one_of(rule, what)) {
            run(std::move(what), i + 1);
            let_one_pass(rule, way, with, i + 1);
            return;
        }
    }
    deliver(std::move(what));
}

void fault_pipeline::deliver(piped_datagram&& what) {
    if (is_silent()) {
        return;
    }
    if (what.way == direction::to_service && arrivals_.size() < most_waiting) {
        arrivals_.push_back({what.with, std::move(what.bytes)});
    } else if (what.way == direction::to_client && departures_.size() < most_waiting) {
        departures_.push_back({what.with, std::move(what.bytes), false});
    }
}

void fault_pipeline::let_one_pass(const live_rule& rule, direction way, const peer& with,
                                  std::size_t next_rule) {
    const auto found = std::find_if(held_.begin(), held_.end(), [&](const held_datagram& one) {
        return one.by == rule.ordinal && one.what.way == way && same_peer(one.what.with, with);
    });
    if (found == held_.end() || --*found->to_pass != 0) {
        return;
    }
    held_datagram passed = std::move(*found);
    held_.erase(found);
    run(std::move(passed.what), next_rule);
}

std::vector<arrival> fault_pipeline::take_arrivals() {
    return std::exchange(arrivals_, {});
}

std::vector<departure> fault_pipeline::take_departures() {
    return std::exchange(departures_, {});
}

std::vector<requested_action> fault_pipeline::take_actions() {
    return std::exchange(actions_, {});
}

} // namespace vantu::orvanta::simulator
