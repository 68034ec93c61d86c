// The tests that docs/security.md names.

#include "docs/markdown_table.hpp"
#include "docs/source_texts.hpp"

#include <gtest/gtest.h>

namespace orvanta_tests {
namespace {

const std::filesystem::path tests_folder = CHECKOUT "/tests";

// All tests of the tree as "suite.name".
std::set<std::string> all_tests() {
    static const std::regex definition(R"(\bTEST(?:_[FP])?\((\w+),\s*(\w+)\))");
    std::set<std::string> names;
    for (const auto& path : sources_in(tests_folder)) {
        const std::string source = text_of_file(path);
        for (std::sregex_iterator at(source.begin(), source.end(), definition), end; at != end; ++at) {
            names.insert((*at)[1].str() + '.' + (*at)[2].str());
        }
    }
    return names;
}

TEST(security_document, names_a_test_that_exists_for_each_claim) {
    static const std::regex name(R"(`(\w+\.\w+)`)");
    const std::set<std::string> tests = all_tests();
    const std::vector<table_row> claims =
        table_under(DOCS_FOLDER "/security.md", "## What the library checks");
    EXPECT_GE(claims.size(), 10U);
    for (const table_row& row : claims) {
        const std::string& held_by = row.back();
        int named = 0;
        for (std::sregex_iterator at(held_by.begin(), held_by.end(), name), end; at != end; ++at, ++named) {
            EXPECT_TRUE(tests.contains((*at)[1].str())) << (*at)[1].str();
        }
        EXPECT_GE(named, 1) << row.front();
    }
}

} // namespace
} // namespace orvanta_tests
