// The schedule of a scenario's steps: times and observed operations in, verbs out. It has no clock of its own
// and knows nothing of what the verbs do.
#pragma once

#include "simulator/control/scenario.hpp"
#include "simulator/service/clients.hpp"
#include "simulator/simulation/simulation.hpp"

#include <cstdint>
#include <string>
#include <vector>

namespace vantu::orvanta::simulator {

class scenario_schedule {
  public:
    scenario_schedule() = default;
    explicit scenario_schedule(std::vector<scenario_step> steps);

    // Notes an operation that a step may wait for. Times are those of the simulation and never run backwards.
    void observe(const observed_operation& what, std::int64_t now_ns);

    // The verbs of the steps that are due by now, each handed out once: by the time at which they became due,
    // those of one time in the order of the scenario.
    [[nodiscard]] std::vector<std::string> take_due(std::int64_t now_ns);

    // When the next step is due; never_ns when none is, or the rest wait for events.
    [[nodiscard]] std::int64_t next_due_ns() const noexcept;

    // Whether all steps have been handed out.
    [[nodiscard]] bool is_finished() const noexcept { return waiting_.empty(); }

  private:
    struct waiting_step {
        scenario_step step;
        std::uint64_t seen{0}; // events that it waits for
        std::int64_t due_ns{never_ns};
    };

    std::vector<waiting_step> waiting_; // in the order of the scenario
};

// Whether an observed operation is what a trigger waits for, whichever of its kind it may be.
[[nodiscard]] bool is_event(const scenario_trigger& trigger, const observed_operation& what) noexcept;

} // namespace vantu::orvanta::simulator
