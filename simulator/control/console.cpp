#include "simulator/control/console.hpp"

#include "shared/text_lines.hpp"
#include "vantu/orvanta/common/format.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"

#include <utility>

namespace vantu::orvanta::simulator {
namespace {

bool says_nothing(std::string_view line) {
    const std::string_view word = take_word(line);
    return word.empty() || word.front() == '#';
}

} // namespace

console::console(run_function run, answer_function answer, print_function print, bool prompts)
    : run_(std::move(run)), answer_(std::move(answer)), print_(std::move(print)), prompts_(prompts) {}

void console::take(std::string line) {
    lines_.push_back(std::move(line));
}

void console::end_of_input() {
    ended_ = true;
}

void console::attend(std::int64_t now_ns) {
    while (!quit_ && goes_on(now_ns) && !lines_.empty()) {
        const std::string line = std::move(lines_.front());
        lines_.pop_front();
        prompted_ = false;
        do_line(line, now_ns);
    }
    if (!prompts_ || quit_ || wait_) {
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
    quit_ = result.quit;
    if (result.good) {
        begin_wait(line, now_ns);
    }
    if (!wait_ || wait_->condition.empty()) {
        answer(line, result);
    }
}

// The line is right, as it has been run.
void console::begin_wait(const std::string& line, std::int64_t now_ns) {
    std::string_view rest = line;
    if (take_word(rest) != "wait") {
        return;
    }
    const std::string milliseconds(take_word(rest));
    if (const auto wait_ms = whole_number(milliseconds)) {
        wait_ = {line, milliseconds, std::string(rest),
                 now_ns + static_cast<std::int64_t>(*wait_ms) * ns_per_millisecond};
    }
}

bool console::goes_on(std::int64_t now_ns) {
    if (!wait_) {
        return true;
    }
    if (wait_->condition.empty()) {
        if (now_ns < wait_->until_ns) {
            return false;
        }
    } else {
        verb_result asked = run_("expect " + wait_->condition);
        if (!asked.good && now_ns < wait_->until_ns) {
            return false;
        }
        if (!asked.good) {
            asked.text.replace(0, unmet_begin.size(), formatted("waited {} ms for ", wait_->milliseconds));
        }
        answer(wait_->line, asked);
    }
    wait_.reset();
    return true;
}

void console::answer(std::string_view line, const verb_result& result) {
    failed_ = failed_ || (!result.good && !prompts_);
    print_(answer_(line, result));
}

std::string text_answer(std::string_view /*line*/, const verb_result& result) {
    if (!result.good) {
        return "error: " + result.text + '\n';
    }
    return result.text.empty() ? "ok\n" : result.text;
}

} // namespace vantu::orvanta::simulator
