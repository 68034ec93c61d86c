// The schedule of a scenario's steps: times and observed operations in, verbs out. It has no clock of its own
// and knows nothing of what the verbs do.
#pragma once

#include "simulator/control/scenario.hpp"
#include "simulator/service/clients.hpp"
#include "simulator/simulation/simulation.hpp"

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <span>
#include <string>
#include <tuple>
#include <vector>

namespace vantu::orvanta::simulator {

class scenario_schedule {
  public:
    // For each client: the steps begin anew with each acceptance of a client, and wait for its events alone.
    explicit scenario_schedule(std::vector<scenario_step> steps, bool for_each_client = false);

    // Notes an operation that a step may wait for. Times are those of the simulation and never run backwards.
    void observe(const observed_operation& what, std::int64_t now_ns);

    // The verbs of the steps that are due by now, of those of the earliest time alone: by the numbers of the
    // clients, those of one client in the order of the scenario. Empty where none is due.
    [[nodiscard]] std::vector<std::string> take_due(std::int64_t now_ns);

    // When the next step is due; never_ns when none is, or the rest wait for events.
    [[nodiscard]] std::int64_t next_due_ns() const noexcept;

    // Drops the steps of all clients but these, where steps are for each client.
    void keep_clients(std::span<const std::uint64_t> numbers);

    // A step that is done after each event waits for so many at a time; further events are passed over.
    static constexpr std::size_t most_waiting = 100'000;

  private:
    struct progress {
        std::uint64_t seen{0};  // events that the step waits for
        std::uint64_t times{0}; // that it has been done
        std::size_t waiting{0}; // times that it is due
    };
    struct due_step {
        std::int64_t due_ns;
        std::uint64_t client;
        std::size_t step;
        bool operator<(const due_step& other) const {
            return std::tie(due_ns, client, step) < std::tie(other.due_ns, other.client, other.step);
        }
    };

    void begin(std::uint64_t client, std::int64_t now_ns);
    void drop(std::uint64_t client);
    void add(const due_step& what, progress& of_step);

    std::vector<scenario_step> steps_; // in the order of the scenario
    bool for_each_client_;
    std::map<std::uint64_t, std::vector<progress>> plays_; // by client; 0: of all
    std::multiset<due_step> due_;
};

// Whether an observed operation is what a trigger waits for, whichever of its kind it may be.
[[nodiscard]] bool is_event(const scenario_trigger& trigger, const observed_operation& what) noexcept;

} // namespace vantu::orvanta::simulator
