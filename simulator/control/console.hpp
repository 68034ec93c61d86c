// The control console: lines in, answers out, in the order of the lines. It reads nothing by itself and has
// no clock: lines and times are given to it.
#pragma once

#include "simulator/simulation/verbs.hpp"

#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace vantu::orvanta::simulator {

class console {
  public:
    using run_function = std::function<verb_result(std::string_view line)>;
    using answer_function = std::function<std::string(std::string_view line, const verb_result& result)>;
    using print_function = std::function<void(std::string_view text)>;

    // The result of a line is printed as `answer` words it. With prompts somebody types: "> " shows that a
    // line is awaited, and the end of the input means quit. Without, the lines are a script, and its end
    // means nothing.
    console(run_function run, answer_function answer, print_function print, bool prompts);

    void take(std::string line);
    void end_of_input();

    // Does the lines that are there, up to one that waits or quits. A wait is answered at once; one for a
    // condition at its end, and each call asks for the condition with the verb expect. Times never run
    // backwards.
    void attend(std::int64_t now_ns);

    // Whether lines stand still as one of them waits.
    [[nodiscard]] bool is_waiting() const noexcept { return wait_.has_value(); }

    [[nodiscard]] bool has_quit() const noexcept { return quit_; }

    // Whether a line of a script was wrong; somebody who types sees it.
    [[nodiscard]] bool has_failed() const noexcept { return failed_; }

  private:
    struct open_wait {
        std::string line;
        std::string milliseconds;
        std::string condition; // empty: none
        std::int64_t until_ns;
    };

    void do_line(const std::string& line, std::int64_t now_ns);
    void begin_wait(const std::string& line, std::int64_t now_ns);
    // Ends a wait that is over; whether there is none any more.
    [[nodiscard]] bool goes_on(std::int64_t now_ns);
    void answer(std::string_view line, const verb_result& result);

    run_function run_;
    answer_function answer_;
    print_function print_;
    bool prompts_;
    bool prompted_{false};
    bool ended_{false};
    bool quit_{false};
    bool failed_{false};
    std::optional<open_wait> wait_;
    std::deque<std::string> lines_;
};

// "ok", what the verb shows, or "error: " and why.
[[nodiscard]] std::string text_answer(std::string_view line, const verb_result& result);

} // namespace vantu::orvanta::simulator
