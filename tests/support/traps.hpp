// How a process ends at the breakpoint trap of a failed check when no debugger is there, and how it goes on
// after it; one source file a platform.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

namespace orvanta_tests {

// For the exit status that GoogleTest hands to the predicate of a death test.
[[nodiscard]] bool ended_by_trap(int exit_status);
[[nodiscard]] bool ended_by_abort(int exit_status);

// From now on the process goes on after breakpoint traps.
void run_past_traps();

// For tests of code that ends the process: each runs in a fresh process of its own.
class death_test : public testing::Test {
  protected:
    void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

} // namespace orvanta_tests

// The statement stops at the breakpoint trap, after this and nothing else on standard error.
#define EXPECT_TRAP(statement, text)                                                                         \
    EXPECT_EXIT(statement, orvanta_tests::ended_by_trap, testing::Eq<std::string>(text))
