// Standard input as lines, without waiting for them. One source file a platform implements it.
#pragma once

#include "simulator/control/line_splitter.hpp"

#include <string>
#include <vector>

namespace vantu::orvanta::simulator {

// Whether somebody types the lines.
[[nodiscard]] bool standard_input_is_terminal() noexcept;

class console_input {
  public:
    // The lines that have come since the last call, without their ends; the last one counts at the end of
    // the input without an end of its own. Never waits.
    [[nodiscard]] std::vector<std::string> take_lines();

    // Whether there is nothing more to come, ever.
    [[nodiscard]] bool has_ended() const noexcept { return ended_; }

  private:
    line_splitter splitter_;
    bool ended_{false};
};

} // namespace vantu::orvanta::simulator
