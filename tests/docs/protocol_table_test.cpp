// The operation table of docs/protocol.md against the one that parser and simulator go by.

#include "docs/markdown_table.hpp"
#include "vantu/orvanta/communication/operations.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta::communication;

constexpr const char* protocol_document = DOCS_FOLDER "/protocol.md";

std::string answer_of(const operation& row) {
    if (row.answered_by == op_code::none) {
        return "-";
    }
    const operation& answer = row_of(row.answered_by, direction::to_client);
    return std::to_string(answer.code) + " `" + std::string(answer.name) + '`';
}

// A row of the table as the document would show it, without its last cell, which is prose.
table_row expected_row(const operation& row) {
    const bool silent = row.event_type == 0;
    return {
        std::to_string(row.code),
        '`' + std::string(row.name) + '`',
        row.way == direction::to_service ? "to service" : "to client",
        std::to_string(row.body_size) + (row.rule == body_rule::minimum ? " + n" : ""),
        silent ? "-" : std::to_string(row.event_type),
        silent ? "-" : (row.tag == tag_rule::copied ? "copied" : "ignored"),
        answer_of(row),
    };
}

std::vector<table_row> expected_rows() {
    std::vector<table_row> rows;
    rows.reserve(operations.size());
    for (const operation& row : operations) {
        rows.push_back(expected_row(row));
    }
    return rows;
}

std::vector<table_row> documented_rows() {
    std::vector<table_row> rows = table_under(protocol_document, "## Operation table");
    for (table_row& row : rows) {
        EXPECT_EQ(row.size(), 8U) << "a row has its seven facts and what it says";
        EXPECT_FALSE(row.back().empty()) << row.front() << " says nothing";
        row.pop_back();
    }
    return rows;
}

TEST(protocol_document, lists_every_operation_and_no_other_in_the_order_of_the_code) {
    EXPECT_THAT(documented_rows(), testing::ElementsAreArray(expected_rows()));
}

TEST(protocol_document, has_a_row_that_differs_for_no_operation) {
    const std::vector<table_row> documented = documented_rows();
    for (const operation& row : operations) {
        EXPECT_THAT(documented, testing::Contains(expected_row(row)).Times(1)) << row.name;
    }
}

TEST(protocol_document, spells_the_keep_alive_row_as_the_wire_has_it) {
    const std::vector<table_row> documented = documented_rows();
    ASSERT_FALSE(documented.empty());
    EXPECT_THAT(documented.front(),
                testing::ElementsAre("1", "`keep_alive`", "to service", "0", "-", "-", "-"));
}

} // namespace
} // namespace orvanta_tests
