// The tool, run as a user runs it.
#include "app/support/tool_process.hpp"

#include <algorithm>
#include <array>
#include <chrono>
#include <regex>
#include <utility>

namespace orvanta_tests {
namespace {

constexpr std::array<std::string_view, 2> log_line_starts{"INFO ", "WARNING "};
constexpr std::string_view message_mark = " MSG ";

std::vector<std::string_view> lines_of(std::string_view text) {
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        const std::size_t size = end == std::string_view::npos ? text.size() : end + 1;
        lines.push_back(text.substr(0, size));
        text.remove_prefix(size);
    }
    return lines;
}

// Also of one that is still being written.
bool is_log_line(std::string_view line) {
    return std::any_of(log_line_starts.begin(), log_line_starts.end(),
                       [&](std::string_view start) { return line.substr(0, start.size()) == start; });
}

} // namespace

std::string without_log_lines(std::string_view text) {
    std::string kept;
    for (const std::string_view line : lines_of(text)) {
        if (!is_log_line(line)) {
            kept += line;
        }
    }
    return kept;
}

std::vector<std::string> log_messages(std::string_view text) {
    std::vector<std::string> messages;
    for (const std::string_view line : lines_of(text)) {
        const std::size_t mark = line.find(message_mark);
        if (is_log_line(line) && mark != std::string_view::npos) {
            const std::size_t start = mark + message_mark.size();
            messages.emplace_back(line.substr(start, line.find_first_of("\r\n") - start));
        }
    }
    return messages;
}

std::string without_orientation(const std::string& text) {
    static const std::regex number("   ([rxyz]) = [ -]*[0-9]+\\.[0-9]{4}");
    return std::regex_replace(text, number, "   $1 = ");
}

std::string on_a_terminal(std::string_view text) {
    std::string shown;
    for (const char character : text) {
        if (character == '\n') {
            shown += '\r';
        }
        shown += character;
    }
    return shown;
}

tool_process::tool_process(attachment kind)
    : program({ORVANTA_CLI_PATH}, kind), at_terminal_(kind == attachment::pseudo_terminal) {}

void tool_process::exchange(std::string_view input, const std::string& expected) {
    program.type(input);
    const std::string wanted = shown(input, expected);
    const std::string read = program.read_until(
        [&](const std::string& printed) { return without_log_lines(printed).size() >= wanted.size(); });
    for (std::string& message : log_messages(read)) {
        logged_.push_back(std::move(message));
    }
    EXPECT_EQ(wanted, without_log_lines(read));
}

void tool_process::exchange_until(std::string_view input, const std::string& expected) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    const std::string wanted = without_orientation(shown(input, expected));
    const std::string prompt = expected.substr(expected.rfind('\n') + 1);
    std::string answer;
    do {
        program.type(input);
        answer = without_orientation(program.read_until(prompt));
    } while (answer != wanted && std::chrono::steady_clock::now() < deadline);
    EXPECT_EQ(wanted, answer);
}

std::string tool_process::shown(std::string_view input, const std::string& expected) const {
    return at_terminal_ ? on_a_terminal(std::string(input) + expected) : expected;
}

void tool_process::expect_end(const ending& expected, const std::string& last_words) {
    const ending seen = program.wait();
    const std::string rest = program.rest();
    for (std::string& message : log_messages(rest)) {
        logged_.push_back(std::move(message));
    }
    EXPECT_EQ(expected.code, seen.code);
    EXPECT_EQ(expected.signal, seen.signal);
    EXPECT_EQ(at_terminal_ ? on_a_terminal(last_words) : last_words, without_log_lines(rest));
}

} // namespace orvanta_tests
