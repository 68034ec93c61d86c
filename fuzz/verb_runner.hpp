// A simulation with a client that has opened its devices, and lines of verbs for it.
#pragma once

#include "simulator/simulation/simulation.hpp"
#include "simulator/simulation/verb_syntax.hpp"
#include "simulator/simulation/verbs.hpp"
#include "text_checks.hpp"

#include <string_view>
#include <variant>

namespace orvanta_fuzz {

class verb_runner {
  public:
    explicit verb_runner(vantu::orvanta::simulator::simulation_settings settings);

    // Runs a line, and requires that what was found wrong with it before is wrong.
    vantu::orvanta::simulator::verb_result run(std::string_view line);

    // Lets time pass; forgets what is sent meanwhile.
    void advance(std::int64_t time_ns);

  private:
    vantu::orvanta::simulator::simulation target_;
};

} // namespace orvanta_fuzz
