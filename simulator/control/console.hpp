// The control console: lines in, answers out, in the order of the lines. It reads nothing by itself and has
// no clock: lines and times are given to it.
#pragma once

#include "simulator/service/clients.hpp"
#include "simulator/simulation/verbs.hpp"

#include <cstdint>
#include <deque>
#include <functional>
#include <string>
#include <string_view>

namespace vantu::orvanta::simulator {

class console {
  public:
    using run_function = std::function<verb_result(std::string_view line)>;
    using print_function = std::function<void(std::string_view text)>;

    // With prompts somebody types: "> " shows that a line is awaited, and the end of the input means quit.
    // Without, the lines are a script, and its end means nothing.
    console(run_function run, print_function print, bool prompts);

    void take(std::string line);
    void end_of_input();

    // Does the lines that are there, up to one that waits or quits. A line that has nothing to say for itself
    // is answered with "ok", one that is wrong with "error: " and why. Times never run backwards.
    void attend(std::int64_t now_ns);

    // When a line that waits has waited enough; never_ns when none does.
    [[nodiscard]] std::int64_t next_due_ns() const noexcept { return waits_until_ns_; }

    [[nodiscard]] bool has_quit() const noexcept { return quit_; }

    // Whether a line of a script was wrong; somebody who types sees it.
    [[nodiscard]] bool has_failed() const noexcept { return failed_; }

  private:
    void do_line(const std::string& line, std::int64_t now_ns);

    run_function run_;
    print_function print_;
    bool prompts_;
    bool prompted_{false};
    bool ended_{false};
    bool quit_{false};
    bool failed_{false};
    std::int64_t waits_until_ns_;
    std::deque<std::string> lines_;
};

} // namespace vantu::orvanta::simulator
