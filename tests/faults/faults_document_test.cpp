// docs/faults.md against the tables that the tests play.
#include "docs/markdown_table.hpp"
#include "faults/matrix_disconnecting.hpp"
#include "faults/matrix_idle.hpp"
#include "faults/matrix_opening.hpp"
#include "faults/matrix_requesting.hpp"
#include "faults/matrix_streaming.hpp"
#include "faults/tool_matrix.hpp"
#include "simulator/simulation/verbs.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <regex>
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
    const std::string name(row.name);
    return {in_code(name + ' ' + std::string(vantu::orvanta::simulator::row_of(row.argument).form)),
            std::string(way), row.at_once ? "yes" : "-", std::string(row.effect),
            in_code(name + ' ' + std::string(row.example))};
}

table_row shown(const vantu::orvanta::simulator::selector_row& row) {
    return {in_code(std::string(row.key) + '=' + std::string(row.form)), std::string(row.meaning)};
}

// The texts in code of a line.
std::vector<std::string> codes_in(const std::string& line) {
    const std::regex code("`([^`]*)`");
    std::vector<std::string> codes;
    for (std::sregex_iterator found(line.begin(), line.end(), code), end; found != end; ++found) {
        codes.push_back((*found)[1]);
    }
    return codes;
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

TEST(faults_document, shows_every_selector_and_no_other) {
    expect_shown(vantu::orvanta::simulator::fault_selectors, "## Selectors");
}

TEST(faults_document, shows_patches_that_are_right) {
    const auto rows = table_under(faults_document, "## Patches");
    EXPECT_GE(rows.size(), 6U);
    for (const table_row& row : rows) {
        for (const std::string& rule : codes_in(row.at(1))) {
            EXPECT_EQ(vantu::orvanta::simulator::check_verb(rule), "");
        }
    }
}

TEST(the_changes, name_what_is_right_for_words_that_are_no_more) {
    const auto words = table_under(DOCS_FOLDER "/../CHANGELOG.md", "### The words of faults");
    EXPECT_THAT(words, testing::SizeIs(15));
    for (const table_row& row : words) {
        const std::vector<std::string> spellings = codes_in(row.front() + row.back());
        ASSERT_THAT(spellings, testing::SizeIs(2));
        const auto complaint_about = [](const std::string& spelling) {
            return vantu::orvanta::simulator::check_verb(spelling.ends_with('=') ? "drop @" + spelling + '3'
                                                                                 : spelling);
        };
        EXPECT_NE(complaint_about(spellings[0]), "") << spellings[0];
        EXPECT_EQ(complaint_about(spellings[1]), "") << spellings[1];
    }
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
