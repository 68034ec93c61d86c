// The tool under every fault, as a process at the service's own port, against the table.
#include "app/support/child_process.hpp"
#include "app/support/tool_process.hpp"
#include "faults/running_service.hpp"
#include "faults/system_text.hpp"
#include "faults/tool_matrix.hpp"

#include <algorithm>
#include <cctype>
#include <chrono>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <ostream>
#include <string>

namespace orvanta_tests {

void PrintTo(const tool_row& row, std::ostream* out);
void PrintTo(const tool_row& row, std::ostream* out) {
    *out << row.rule;
}

namespace {

using namespace orvanta_tests;
using testing::HasSubstr;

constexpr std::string_view later = "later: ";
const std::string menu_prompt = "Select option: \t";

std::string_view verb_of(const tool_row& row) {
    return row.rule.starts_with(later) ? row.rule.substr(later.size()) : row.rule;
}

// "On 0.75, On, Right" as the tool reports it; the numbers of the orientation are left out.
std::string report_of(std::string_view shown) {
    if (shown == "nothing") {
        return main_menu;
    }
    const auto space = shown.find(' ');
    const auto comma = shown.find(", ");
    const auto last_comma = shown.rfind(", ");
    const auto part = [shown](std::size_t begin, std::size_t end) {
        return std::string(shown.substr(begin, end - begin));
    };
    return without_orientation(
        "\n\tOrientation:\n\t   r =  0.0000\n\t   x =  0.0000\n\t   y =  0.0000\n\t   z =  0.0000\n"
        "\n\tGravity Compensation: \t" +
        part(0, space) + "\n\t   Scaling Factor:\t" + part(space + 1, comma) + "\n\n\tTorque Scaling:\t\t" +
        part(comma + 2, last_comma) + "\n\n\tHandedness:\t\t" + part(last_comma + 2, shown.size()) + "\n" +
        main_menu);
}

// The tool at pipes, with all that it has printed.
class tool_session {
  public:
    // Types, and returns what is printed up to the next prompt, log lines aside.
    std::string answer_to(std::string_view input) {
        program.type(input);
        const std::string printed = program.read_until(menu_prompt);
        output_ += printed;
        return without_log_lines(printed);
    }

    // Asks for the configuration until the answer is this one.
    void await_configuration(const std::string& expected) {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);
        std::string answer;
        do {
            answer = without_orientation(answer_to("2\n"));
        } while (answer != expected && std::chrono::steady_clock::now() < deadline);
        EXPECT_EQ(answer, expected);
    }

    // Messages on standard error, each once, and log lines that are not about a connection; after the end.
    [[nodiscard]] std::string printed() const {
        std::string text;
        const auto add = [&text](std::string_view line) {
            if (!line.empty() && text.find(line) == std::string::npos) {
                text.append(text.empty() ? "" : " / ").append(line);
            }
        };
        std::string_view errors = errors_;
        while (!errors.empty()) {
            const auto end = std::min(errors.find('\n'), errors.size());
            add(errors.substr(0, end));
            errors.remove_prefix(std::min(end + 1, errors.size()));
        }
        // A log line may follow a prompt on its line.
        constexpr std::string_view mark = " MSG ";
        std::string_view rest = output_;
        for (auto at = rest.find(mark); at != std::string_view::npos; at = rest.find(mark)) {
            rest.remove_prefix(at + mark.size());
            const std::string message = with_text_of_linux(std::string(rest.substr(0, rest.find('\n'))));
            if (!message.starts_with("Connected: ") && !message.starts_with("Attempted ")) {
                add(message);
            }
        }
        return text.empty() ? "-" : text;
    }

    // Waits for the end and keeps what was still printed.
    ending end() {
        const ending seen = program.wait();
        output_ += program.rest() + program.rest_of_errors();
        errors_ = without_log_lines(program.rest_of_errors());
        return seen;
    }

    child_process program{{ORVANTA_CLI_PATH}, attachment::pipes};

  private:
    std::string output_;
    std::string errors_;
};

void leave_in_order(tool_session& tool) {
    tool.program.type("4\n");
    const ending seen = tool.end();
    EXPECT_EQ(seen, succeeded);
}

// A session that nothing goes wrong in; returns the threads of a tool that listens. Sanitizers have some of
// their own.
std::size_t live_a_session() {
    tool_session tool;
    tool.answer_to("");
    EXPECT_EQ(tool.answer_to("0\n"), "Device Info Updated\n" + main_menu);
    tool.await_configuration(report_of("On 0.75, On, Right"));
    const std::size_t threads = tool.program.threads();
    leave_in_order(tool);
    return threads;
}

void expect_no_start(const tool_row& row) {
    tool_session tool;
    const ending seen = tool.end();
    EXPECT_NE(seen, succeeded) << "the tool has ended in order";
    EXPECT_THAT(tool.program.rest_of_errors(), HasSubstr(std::string(row.start) + '\n'));
}

void expect_session(const tool_row& row, running_service& service, std::size_t listening_threads) {
    tool_session tool;
    EXPECT_EQ(tool.answer_to(""), banner + main_menu);
    EXPECT_EQ(tool.answer_to("0\n"), "Device Info Updated\n" + main_menu);
    if (row.rule.starts_with(later)) {
        tool.await_configuration(report_of("On 0.75, On, Right"));
        service.tell(std::string(verb_of(row)));
    }
    const std::size_t threads = row.listens == "no" ? listening_threads - 1 : listening_threads;
    tool.program.wait_for_threads(threads);
    tool.await_configuration(report_of(row.shown));
    EXPECT_EQ(tool.program.threads(), threads);
    leave_in_order(tool);
    EXPECT_EQ(tool.printed(), row.printed);
}

class tool_under : public testing::TestWithParam<tool_row> {};

TEST_P(tool_under, comes_to_what_the_table_states) {
    const tool_row& row = GetParam();
    const std::string_view verb = verb_of(row);
    const auto* const fault = vantu::orvanta::simulator::find_fault(verb.substr(0, verb.find(' ')));
    ASSERT_NE(fault, nullptr);
    running_service service;
    const std::size_t listening_threads = live_a_session(); // which also leaves stale answers
    if (!row.rule.starts_with(later)) {
        service.tell(std::string(verb));
    }
    if (row.start == "connects") {
        expect_session(row, service, listening_threads);
    } else {
        expect_no_start(row);
    }
    EXPECT_GT(service.happened(fault->kind), 0U);
}

std::string name_of(const testing::TestParamInfo<tool_row>& info) {
    std::string name;
    for (const char letter : info.param.rule) {
        name += std::isalnum(static_cast<unsigned char>(letter)) != 0 ? letter : '_';
    }
    return name;
}

INSTANTIATE_TEST_SUITE_P(fault, tool_under, testing::ValuesIn(tool_rows), name_of);

} // namespace
} // namespace orvanta_tests
