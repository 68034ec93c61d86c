// The tool, run as a user runs it.
#pragma once

#include "app/support/child_process.hpp"
#include "app/support/transcripts.hpp"

#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <vector>

namespace orvanta_tests {

// A text without the library's log lines.
[[nodiscard]] std::string without_log_lines(std::string_view text);

// The messages of the log lines in a text.
[[nodiscard]] std::vector<std::string> log_messages(std::string_view text);

// A text with the numbers of an orientation left out.
[[nodiscard]] std::string without_orientation(const std::string& text);

// A text as a terminal in its usual mode shows it.
[[nodiscard]] std::string on_a_terminal(std::string_view text);

class tool_process {
  public:
    explicit tool_process(attachment kind = attachment::one_pipe);

    // Types the input and expects exactly this answer, log lines aside. At a terminal the input's
    // echo comes first.
    void exchange(std::string_view input, const std::string& expected);

    // Types the input over and over until the answer is the expected one; numbers that differ from
    // run to run are left out of both.
    void exchange_until(std::string_view input, const std::string& expected);

    // Expects exactly this, printed since the last exchange, then the end.
    void expect_end(const ending& expected, const std::string& last_words = {});

    // The log messages so far.
    [[nodiscard]] const std::vector<std::string>& logged() const { return logged_; }

    child_process program;

  private:
    // An exchange as the one who types sees it.
    [[nodiscard]] std::string shown(std::string_view input, const std::string& expected) const;

    bool at_terminal_;
    std::vector<std::string> logged_;
};

} // namespace orvanta_tests
