#include "simulator/faults/fault_pipeline.hpp"

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>

namespace vantu::orvanta::simulator {

using communication::direction;

void fault_pipeline::add(const fault_rule& rule, std::span<const peer> clients, std::int64_t now_ns) {
    now_ns_ = now_ns;
    const std::uint64_t ordinal = ordinals_++;
    if (rule.now) {
        act_at_once(rule, clients);
    } else {
        const auto same = std::find_if(rules_.begin(), rules_.end(), [&rule](const live_rule& one) {
            return !rule.name.empty() && one.state.rule.name == rule.name;
        });
        if (same != rules_.end()) {
            same->state = {rule, same->state.number, 0, 0};
        } else {
            rules_.push_back({{rule, ordinal + 1, 0, 0}, ordinal, {fault_random(seed_, {ordinal}), nullptr}});
        }
    }
}

void fault_pipeline::heal() {
    heal_rules([](const live_rule&) { return true; });
    silent_until_ns_ = long_over_ns;
}

void fault_pipeline::heal(fault_kind kind) {
    heal_rules([kind](const live_rule& rule) { return rule.state.rule.kind == kind; });
    if (kind == fault_kind::silence) {
        silent_until_ns_ = long_over_ns;
    }
}

bool fault_pipeline::heal(std::string_view name_or_number) {
    const std::size_t before = rules_.size();
    heal_rules([name_or_number](const live_rule& rule) {
        return rule.state.rule.name == name_or_number || std::to_string(rule.state.number) == name_or_number;
    });
    return rules_.size() != before;
}

void fault_pipeline::heal_rules(const std::function<bool(const live_rule&)>& is_healed) {
    held_.release([&](std::uint64_t by) {
        const auto holder = std::find_if(rules_.begin(), rules_.end(),
                                         [by](const live_rule& rule) { return rule.ordinal == by; });
        return holder == rules_.end() || is_healed(*holder);
    });
    std::erase_if(rules_, is_healed);
}

void fault_pipeline::from_socket(const peer& from, std::span<const std::byte> bytes, std::int64_t now_ns) {
    now_ns_ = now_ns;
    if (is_silent()) {
        return;
    }
    (void)chances_.number_of(from);
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
    for (held_datagrams::entry& one : held_.take_due(now_ns)) {
        run(std::move(one.what), first_rule_after(one.by));
    }
}

void fault_pipeline::release(std::int64_t now_ns) {
    held_.release([](std::uint64_t) { return true; });
    tick(now_ns);
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
        const bool is_passing = held_.has_to_be_passed(rule.ordinal, way, with);
        if (fitting) {
            ++rule.state.fitted;
            rule.draw = chances_.next(rule.ordinal, rule.state.rule.code, what);
        }
        if (fitting && is_its_turn(rule) && !is_passing) {
            apply(rule, std::move(what), i + 1);
            return;
        }
        if (is_passing) {
            run(std::move(what), i + 1);
            if (auto passed = held_.let_one_pass(rule.ordinal, way, with)) {
                run(std::move(passed->what), i + 1);
            }
            return;
        }
    }
    deliver(std::move(what));
}

void fault_pipeline::deliver(piped_datagram&& what) {
    if (is_silent()) {
        return;
    }
    if (what.way == direction::to_service) {
        arrivals_.add({what.with, std::move(what.bytes)});
    } else {
        departures_.add({what.with, std::move(what.bytes), false});
    }
}

} // namespace vantu::orvanta::simulator
