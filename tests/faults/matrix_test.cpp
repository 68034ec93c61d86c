// The client library under every fault in every situation, against the tables.
#include "faults/fault_fixture.hpp"
#include "faults/matrix_disconnecting.hpp"
#include "faults/matrix_idle.hpp"
#include "faults/matrix_opening.hpp"
#include "faults/matrix_requesting.hpp"
#include "faults/matrix_streaming.hpp"
#include "faults/situations.hpp"
#include "vantu/orvanta/orvanta.h"

#include <gtest/gtest.h>
#include <ostream>
#include <string>

namespace orvanta_tests {

void PrintTo(const matrix_row& row, std::ostream* out);
void PrintTo(const matrix_row& row, std::ostream* out) {
    *out << row.rule;
}

namespace {

using testing::ValuesIn;

// "truncate 12@op=4,dir=out" as a name of a test.
std::string name_of(const testing::TestParamInfo<matrix_row>& info) {
    std::string name;
    for (const char letter : info.param.rule) {
        name += std::isalnum(static_cast<unsigned char>(letter)) != 0 ? letter : '_';
    }
    return name;
}

void expect_as_stated(situation when, const matrix_row& row) {
    if (row.seen == "the process ends") {
        GTEST_FLAG_SET(death_test_style, "threadsafe");
        EXPECT_DEATH(play_to_the_end(row), std::string(row.logged).substr(0, row.logged.find('(')));
        return;
    }
    const observed_row observed = play(when, row);
    EXPECT_EQ(observed.happened, row.happened);
    EXPECT_EQ(observed.seen, row.seen);
    EXPECT_EQ(observed.logged, row.logged);
    EXPECT_EQ(observed.next, row.next);
}

class opening_under : public testing::TestWithParam<matrix_row> {};
class idle_under : public testing::TestWithParam<matrix_row> {};
class streaming_under : public testing::TestWithParam<matrix_row> {};
class requesting_under : public testing::TestWithParam<matrix_row> {};
class disconnecting_under : public testing::TestWithParam<matrix_row> {};

TEST_P(opening_under, comes_to_what_the_table_states) {
    expect_as_stated(situation::opening, GetParam());
}
TEST_P(idle_under, comes_to_what_the_table_states) {
    expect_as_stated(situation::idle, GetParam());
}
TEST_P(streaming_under, comes_to_what_the_table_states) {
    expect_as_stated(situation::streaming, GetParam());
}
TEST_P(requesting_under, comes_to_what_the_table_states) {
    expect_as_stated(situation::requesting, GetParam());
}
TEST_P(disconnecting_under, comes_to_what_the_table_states) {
    expect_as_stated(situation::disconnecting, GetParam());
}

INSTANTIATE_TEST_SUITE_P(fault, opening_under, ValuesIn(opening_rows), name_of);
INSTANTIATE_TEST_SUITE_P(fault, idle_under, ValuesIn(idle_rows), name_of);
INSTANTIATE_TEST_SUITE_P(fault, streaming_under, ValuesIn(streaming_rows), name_of);
INSTANTIATE_TEST_SUITE_P(fault, requesting_under, ValuesIn(requesting_rows), name_of);
INSTANTIATE_TEST_SUITE_P(fault, disconnecting_under, ValuesIn(disconnecting_rows), name_of);

} // namespace
} // namespace orvanta_tests
