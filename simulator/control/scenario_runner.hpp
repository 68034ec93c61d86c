// Runs a scenario with a simulation: moves the simulation, and does each verb of the scenario at its time.
#pragma once

#include "simulator/control/scenario_schedule.hpp"
#include "simulator/simulation/verbs.hpp"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

namespace vantu::orvanta::simulator {

class scenario_runner {
  public:
    // Told what a verb of the scenario shows.
    using print_function = std::function<void(std::string_view text)>;

    // Observes the target, which outlives the runner and has no other observer.
    scenario_runner(simulation& target, std::vector<scenario_step> steps, print_function print,
                    bool for_each_client = false);
    ~scenario_runner();
    scenario_runner(const scenario_runner&) = delete;
    scenario_runner& operator=(const scenario_runner&) = delete;

    // As advance_to of the simulation, with the scenario's verbs done on the way. Stops early at "quit".
    void advance_to(std::int64_t since_start_ns);

    // Does what has become due at the present tick, as by a datagram that came.
    void attend();

    // Does a verb that is none of the scenario's.
    verb_result run(std::string_view verb);

    // When the simulation or the scenario has something to do next; never_ns when neither has.
    [[nodiscard]] std::int64_t next_due_ns() const;

    // Whether a verb has ended the simulation.
    [[nodiscard]] bool has_quit() const noexcept { return quit_; }
    // Verbs that could not be done: each is shown in a line that begins with "error: ".
    [[nodiscard]] std::size_t failures() const noexcept { return failures_; }
    // Goes on with the steps that are left.
    void go_on() noexcept { quit_ = false; }

  private:
    void drop_forgotten_clients();

    simulation& target_;
    scenario_schedule schedule_;
    print_function print_;
    std::size_t failures_{0};
    std::uint64_t forgotten_clients_{0};
    bool doing_{false};
    bool quit_{false};
};

} // namespace vantu::orvanta::simulator
