#include "simulator/control/scenario_schedule.hpp"

#include <algorithm>
#include <utility>

namespace vantu::orvanta::simulator {
namespace {

using communication::direction;
namespace op_code = communication::op_code;

bool is_request(const observed_operation& what) noexcept {
    return what.way == direction::to_service && what.code != op_code::keep_alive &&
           what.code != op_code::connect && what.code != op_code::disconnect;
}

} // namespace

bool is_event(const scenario_trigger& trigger, const observed_operation& what) noexcept {
    if (trigger.event == scenario_event::request) {
        return trigger.code == 0 ? is_request(what)
                                 : what.way == direction::to_service && what.code == trigger.code;
    }
    return std::any_of(scenario_events.begin(), scenario_events.end(), [&](const scenario_event_row& row) {
        return row.event == trigger.event && row.way == what.way && row.code == what.code;
    });
}

scenario_schedule::scenario_schedule(std::vector<scenario_step> steps, bool for_each_client)
    : steps_(std::move(steps)), for_each_client_(for_each_client) {
    if (!for_each_client_) {
        begin(0, 0);
    }
}

void scenario_schedule::begin(std::uint64_t client, std::int64_t now_ns) {
    drop(client);
    auto& play = plays_[client];
    play.resize(steps_.size());
    for (std::size_t i = 0; i < steps_.size(); ++i) {
        if (!steps_[i].after) {
            add({now_ns + steps_[i].due_ns, client, i}, play[i]);
        }
    }
}

void scenario_schedule::drop(std::uint64_t client) {
    plays_.erase(client);
    std::erase_if(due_, [client](const due_step& one) { return one.client == client; });
}

void scenario_schedule::add(const due_step& what, progress& of_step) {
    if (of_step.waiting < most_waiting) {
        ++of_step.waiting;
        due_.insert(what);
    }
}

void scenario_schedule::observe(const observed_operation& what, std::int64_t now_ns) {
    const std::uint64_t client = for_each_client_ ? what.client : 0;
    if (for_each_client_ && is_event({scenario_event::connect}, what)) {
        begin(client, now_ns);
    }
    const auto play = plays_.find(client);
    if (play == plays_.end()) {
        return;
    }
    for (std::size_t i = 0; i < steps_.size(); ++i) {
        const auto& trigger = steps_[i].after;
        if (!trigger || !is_event(*trigger, what)) {
            continue;
        }
        const std::uint64_t seen = ++play->second[i].seen;
        if (seen == trigger->nth || (trigger->each && seen > trigger->nth)) {
            add({now_ns + steps_[i].due_ns, client, i}, play->second[i]);
        }
    }
}

std::vector<std::string> scenario_schedule::take_due(std::int64_t now_ns) {
    std::vector<std::string> verbs;
    const std::int64_t due_ns = next_due_ns();
    while (due_ns <= now_ns && next_due_ns() == due_ns) {
        due_step taken = due_.extract(due_.begin()).value();
        const scenario_step& step = steps_[taken.step];
        for (const std::string& verb : step.verbs) {
            verbs.push_back(for_each_client_ ? verb_for_client(verb, taken.client) : verb);
        }
        progress& of_step = plays_.at(taken.client)[taken.step];
        --of_step.waiting;
        if (++of_step.times != step.times && step.every_ns != 0) {
            taken.due_ns += step.every_ns;
            add(taken, of_step);
        }
    }
    return verbs;
}

std::int64_t scenario_schedule::next_due_ns() const noexcept {
    return due_.empty() ? never_ns : due_.begin()->due_ns;
}

void scenario_schedule::keep_clients(std::span<const std::uint64_t> numbers) {
    for (auto play = plays_.begin(); for_each_client_ && play != plays_.end();) {
        const std::uint64_t client = (play++)->first;
        if (std::find(numbers.begin(), numbers.end(), client) == numbers.end()) {
            drop(client);
        }
    }
}

} // namespace vantu::orvanta::simulator
