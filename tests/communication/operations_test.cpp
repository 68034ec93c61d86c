// The look-up in the operation table. The rows themselves are held against docs/protocol.md in tests/docs.
#include "vantu/orvanta/communication/operations.hpp"

#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta::communication;

TEST(operation_table, finds_each_row_by_its_code_and_direction) {
    for (const operation& row : operations) {
        EXPECT_EQ(find_operation(row.code, row.way), &row) << row.name;
        EXPECT_EQ(&row_of(row.code, row.way), &row) << row.name;
        EXPECT_EQ(body_size_of(row.code, row.way), row.body_size) << row.name;
    }
}

TEST(operation_table, finds_no_other_code) {
    std::size_t found = 0;
    for (unsigned code = 0; code < 256; ++code) {
        for (const direction way : {direction::to_service, direction::to_client}) {
            found += find_operation(static_cast<std::uint8_t>(code), way) != nullptr ? 1U : 0U;
        }
    }
    EXPECT_EQ(found, operations.size());
}

TEST(operation_table, gives_the_event_of_the_answer_to_a_request) {
    EXPECT_EQ(answer_event_of(op_code::keep_alive), vantu_orvanta_event_none);
    EXPECT_EQ(answer_event_of(op_code::connect), vantu_orvanta_event_none);
    EXPECT_EQ(answer_event_of(op_code::disconnect), vantu_orvanta_event_disconnected);
    EXPECT_EQ(answer_event_of(op_code::config_gravity_compensation_set),
              vantu_orvanta_event_config_gravity_compensation);
}

} // namespace
} // namespace orvanta_tests
