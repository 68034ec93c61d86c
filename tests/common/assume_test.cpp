// The always-on checks.
#include "support/log_capture.hpp"
#include "support/traps.hpp"
#include "vantu/orvanta/common/assume.hpp"

#include <cstdio>
#include <string>

namespace orvanta_tests {
namespace {

using testing::IsEmpty;
using vantu::orvanta::assumption_failed;
using vantu::orvanta::set_log_sink;
using vantu::orvanta::source_location;

#define A_MACRO (1 + 1)
#define A_CHECK(value) ((value) == A_MACRO)

constexpr source_location somewhere{"some/folder/data", 45};

void check_a_broken_length() {
    const std::uint64_t len = 2;
    const auto read_len = [] { return std::uint64_t{1}; };
    assume_at(somewhere, len <= read_len());
}

TEST(assume, that_holds_logs_nothing_and_evaluates_its_expression_once) {
    const log_capture log;
    int evaluated = 0;
    assume(++evaluated == 1);
    assume_at(somewhere, ++evaluated == 2);
    EXPECT_EQ(evaluated, 2);
    EXPECT_THAT(log.entries(), IsEmpty());
}

using assume_death_test = death_test;

TEST_F(assume_death_test, logs_the_expression_as_written_and_ends_the_process) {
    EXPECT_TRAP(check_a_broken_length(), "ERROR data 45 MSG assumption failed: len <= read_len()\n");
}

TEST_F(assume_death_test, reports_its_own_file_and_line) {
    const std::string line = std::to_string(__LINE__ + 1);
    EXPECT_TRAP(assume(1 + 1 == 3), "ERROR assume_test.cpp " + line + " MSG assumption failed: 1 + 1 == 3\n");
}

TEST_F(assume_death_test, leaves_the_macros_of_an_expression_as_written) {
    const int one = 1;
    EXPECT_TRAP(assume_at(somewhere, one == A_MACRO),
                "ERROR data 45 MSG assumption failed: one == A_MACRO\n");
    EXPECT_EXIT(assume(one == A_MACRO), ended_by_trap, testing::HasSubstr("failed: one == A_MACRO\n"));
    EXPECT_EXIT(assume(A_CHECK(one)), ended_by_trap, testing::HasSubstr("failed: A_CHECK(one)\n"));
}

TEST_F(assume_death_test, keeps_the_commas_of_an_expression) {
    const auto sum = [](int a, int b) { return a + b; };
    EXPECT_TRAP(assume_at(somewhere, sum(1, 2) == 4),
                "ERROR data 45 MSG assumption failed: sum(1, 2) == 4\n");
}

TEST_F(assume_death_test, hands_its_line_to_the_sink) {
    const auto check = [] {
        set_log_sink([](std::uint64_t opaque, log_level level, const std::string& path, std::uint64_t line,
                        const std::string& message) {
            std::fprintf(stderr, "%d|%d|%s|%d|%s", static_cast<int>(opaque), static_cast<int>(level),
                         path.c_str(), static_cast<int>(line), message.c_str());
            std::fflush(stderr);
        });
        check_a_broken_length();
    };
    EXPECT_TRAP(check(), "0|3|some/folder/data|45|assumption failed: len <= read_len()");
}

TEST_F(assume_death_test, stops_at_a_breakpoint_before_it_aborts) {
    EXPECT_TRAP(assumption_failed(), "");
    const auto pass_the_breakpoint = [] {
        run_past_traps();
        assumption_failed();
    };
    EXPECT_EXIT(pass_the_breakpoint(), ended_by_abort, "");
}

} // namespace
} // namespace orvanta_tests
