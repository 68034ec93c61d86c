#include "simulator/control/scenario_schedule.hpp"

#include <algorithm>
#include <iterator>
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

scenario_schedule::scenario_schedule(std::vector<scenario_step> steps) {
    waiting_.reserve(steps.size());
    for (scenario_step& step : steps) {
        const std::int64_t due_ns = step.after ? never_ns : step.due_ns;
        waiting_.push_back({std::move(step), 0, due_ns});
    }
}

void scenario_schedule::observe(const observed_operation& what, std::int64_t now_ns) {
    for (waiting_step& one : waiting_) {
        const auto& trigger = one.step.after;
        if (trigger && one.seen < trigger->nth && is_event(*trigger, what) && ++one.seen == trigger->nth) {
            one.due_ns = now_ns + one.step.due_ns;
        }
    }
}

std::vector<std::string> scenario_schedule::take_due(std::int64_t now_ns) {
    const auto later = std::stable_partition(waiting_.begin(), waiting_.end(),
                                             [&](const waiting_step& one) { return one.due_ns <= now_ns; });
    std::stable_sort(waiting_.begin(), later, [](const waiting_step& left, const waiting_step& right) {
        return left.due_ns < right.due_ns;
    });
    std::vector<std::string> due;
    for (auto one = waiting_.begin(); one != later; ++one) {
        std::move(one->step.verbs.begin(), one->step.verbs.end(), std::back_inserter(due));
    }
    waiting_.erase(waiting_.begin(), later);
    return due;
}

std::int64_t scenario_schedule::next_due_ns() const noexcept {
    std::int64_t next = never_ns;
    for (const waiting_step& one : waiting_) {
        next = std::min(next, one.due_ns);
    }
    return next;
}

} // namespace vantu::orvanta::simulator
