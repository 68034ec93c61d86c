#include "simulator/control/console.hpp"

#include "shared/text_lines.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"

#include <optional>
#include <utility>

namespace vantu::orvanta::simulator {
namespace {

bool says_nothing(std::string_view line) {
    const std::string_view word = take_word(line);
    return word.empty() || word.front() == '#';
}

// The time of a line "wait MS", known to be right; empty for any other.
std::optional<std::int64_t> wait_of(std::string_view line) {
    if (take_word(line) != "wait") {
        return std::nullopt;
    }
    const auto wait_ms = whole_number(take_word(line));
    if (!wait_ms) {
        return std::nullopt;
    }
    return static_cast<std::int64_t>(*wait_ms) * ns_per_millisecond;
}

} // namespace

console::console(run_function run, print_function print, bool prompts)
    : run_(std::move(run)), print_(std::move(print)), prompts_(prompts), waits_until_ns_(never_ns) {}

void console::take(std::string line) {
    lines_.push_back(std::move(line));
}

void console::end_of_input() {
    ended_ = true;
}

void console::attend(std::int64_t now_ns) {
    if (waits_until_ns_ > now_ns && waits_until_ns_ != never_ns) {
        return;
    }
    waits_until_ns_ = never_ns;
    while (!quit_ && waits_until_ns_ == never_ns && !lines_.empty()) {
        const std::string line = std::move(lines_.front());
        lines_.pop_front();
        prompted_ = false;
        do_line(line, now_ns);
    }
    if (!prompts_ || quit_ || waits_until_ns_ != never_ns) {
        return;
    }
    if (ended_) {
        quit_ = true;
        print_("\n"); // the prompt's line ends before the next output
    } else if (!prompted_) {
        prompted_ = true;
        print_("> ");
    }
}

void console::do_line(const std::string& line, std::int64_t now_ns) {
    if (says_nothing(line)) {
        return;
    }
    const verb_result result = run_(line);
    if (!result.good) {
        failed_ = !prompts_;
        print_("error: " + result.text + '\n');
        return;
    }
    quit_ = result.quit;
    if (const auto wait_ns = wait_of(line)) {
        waits_until_ns_ = now_ns + *wait_ns;
    }
    print_(result.text.empty() ? "ok\n" : result.text);
}

} // namespace vantu::orvanta::simulator
