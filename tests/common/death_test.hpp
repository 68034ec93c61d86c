// For tests of code that ends the process: each runs in a fresh process of its own.
#pragma once

#include "support/traps.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orvanta_tests {

class death_test : public testing::Test {
  protected:
    void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

} // namespace orvanta_tests

// The statement stops at the breakpoint trap, after this and nothing else on standard error.
#define EXPECT_TRAP(statement, text)                                                                         \
    EXPECT_EXIT(statement, orvanta_tests::ended_by_trap, testing::Eq<std::string>(text))
