// docs/faults.md against the tables that the tests play.
#include "docs/markdown_table.hpp"
#include "faults/matrix_disconnecting.hpp"
#include "faults/matrix_idle.hpp"
#include "faults/matrix_opening.hpp"
#include "faults/matrix_requesting.hpp"
#include "faults/matrix_streaming.hpp"
#include "faults/tool_matrix.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace orvanta_tests {
namespace {

constexpr const char* faults_document = DOCS_FOLDER "/faults.md";

std::string in_code(std::string_view text) {
    return '`' + std::string(text) + '`';
}

table_row shown(const matrix_row& row) {
    return {in_code(row.rule), std::to_string(row.happened), std::string(row.seen), std::string(row.logged),
            std::string(row.next)};
}

table_row shown(const tool_row& row) {
    return {in_code(row.rule), std::string(row.start), std::string(row.listens), std::string(row.shown),
            std::string(row.printed)};
}

table_row shown(const fault_row& row) {
    const std::string_view way = row.to_service && row.to_client ? "both" : row.to_service ? "in" : "out";
    return {in_code(row.name), std::string(way), row.at_once ? "yes" : "-", std::string(row.effect),
            in_code(std::string(row.name) + ' ' + std::string(row.example))};
}

template <typename Rows> void expect_shown(const Rows& rows, const std::string& heading) {
    std::vector<table_row> expected;
    for (const auto& row : rows) {
        expected.push_back(shown(row));
    }
    EXPECT_THAT(table_under(faults_document, heading), testing::ElementsAreArray(expected)) << heading;
}

TEST(faults_document, shows_every_fault_and_no_other) {
    expect_shown(faults, "## The faults");
}

TEST(faults_document, shows_what_a_client_meets_as_it_is_tested) {
    expect_shown(opening_rows, "## While it connects");
    expect_shown(idle_rows, "## While it is idle");
    expect_shown(streaming_rows, "## While states stream");
    expect_shown(requesting_rows, "## While it waits for an answer");
    expect_shown(disconnecting_rows, "## While it says goodbye");
}

TEST(faults_document, shows_what_a_user_of_the_tool_meets_as_it_is_tested) {
    expect_shown(tool_rows, "## Under the tool");
}

} // namespace
} // namespace orvanta_tests
