#include "simulator/control/scenario_runner.hpp"

#include "simulator/simulation/verbs.hpp"

#include <algorithm>
#include <string>
#include <utility>

namespace vantu::orvanta::simulator {

scenario_runner::scenario_runner(simulation& target, std::vector<scenario_step> steps, print_function print)
    : target_(target), schedule_(std::move(steps)), print_(std::move(print)) {
    target_.observe([this](const observed_operation& what) { schedule_.observe(what, target_.now_ns()); });
}

scenario_runner::~scenario_runner() {
    target_.observe({});
}

void scenario_runner::advance_to(std::int64_t since_start_ns) {
    attend();
    // In steps, since a datagram sent on the way may be the event that the scenario waits for.
    while (!quit_ && next_due_ns() < since_start_ns) {
        target_.advance_to(std::max(next_due_ns(), target_.now_ns() + simulation_tick_ns));
        attend();
    }
    if (!quit_) {
        target_.advance_to(since_start_ns);
        attend();
    }
}

void scenario_runner::attend() {
    // A verb may bring the event that the next step waits for.
    while (!quit_ && schedule_.next_due_ns() <= target_.now_ns()) {
        for (const std::string& verb : schedule_.take_due(target_.now_ns())) {
            const verb_result result = run_verb(target_, verb);
            if (!result.good) {
                ++failures_;
                print_("error: " + verb + ": " + result.text + '\n');
            } else if (!result.text.empty()) {
                print_(result.text);
            }
            quit_ = result.quit;
            if (quit_) {
                break;
            }
        }
    }
}

std::int64_t scenario_runner::next_due_ns() const {
    return std::min(target_.next_due_ns(), schedule_.next_due_ns());
}

} // namespace vantu::orvanta::simulator
