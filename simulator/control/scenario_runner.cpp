#include "simulator/control/scenario_runner.hpp"

#include <algorithm>
#include <string>
#include <utility>

namespace vantu::orvanta::simulator {

// An event that a verb of a step brings counts a tick later: a step that brings its own lets time pass.
scenario_runner::scenario_runner(simulation& target, std::vector<scenario_step> steps, print_function print,
                                 bool for_each_client)
    : target_(target), schedule_(std::move(steps), for_each_client), print_(std::move(print)) {
    target_.observe([this](const observed_operation& what) {
        schedule_.observe(what, target_.now_ns() + (doing_ ? simulation_tick_ns : 0));
    });
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
    while (!quit_ && schedule_.next_due_ns() <= target_.now_ns()) {
        for (const std::string& verb : schedule_.take_due(target_.now_ns())) {
            doing_ = true;
            const verb_result result = run(verb);
            doing_ = false;
            if (!result.good) {
                ++failures_;
                print_("error: " + verb + ": " + result.text + '\n');
            } else if (!result.text.empty()) {
                print_(result.text);
            }
            if (quit_) {
                break;
            }
        }
    }
    if (target_.forgotten_clients() != forgotten_clients_) {
        drop_forgotten_clients();
    }
}

verb_result scenario_runner::run(std::string_view verb) {
    verb_result result = run_verb(target_, verb);
    quit_ = quit_ || result.quit;
    return result;
}

// After what their last events have made due: a goodbye is one.
void scenario_runner::drop_forgotten_clients() {
    forgotten_clients_ = target_.forgotten_clients();
    std::vector<std::uint64_t> left;
    for (const client& one : target_.clients()) {
        left.push_back(target_.number_of(one));
    }
    schedule_.keep_clients(left);
}

std::int64_t scenario_runner::next_due_ns() const {
    return std::min(target_.next_due_ns(), schedule_.next_due_ns());
}

} // namespace vantu::orvanta::simulator
