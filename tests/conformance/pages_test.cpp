// docs/protocol.md, docs/conformance.md and the manual page against the table of rules and the options.
#include "conformance/options.hpp"
#include "conformance/rules.hpp"
#include "docs/markdown_table.hpp"
#include "vantu/orvanta/communication/operations.hpp"

#include <array>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>
#include <regex>
#include <set>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta::conformance;
using testing::HasSubstr;

std::string file(const char* path) {
    std::ifstream stream(path);
    return {std::istreambuf_iterator<char>(stream), {}};
}

// As the documents name it.
std::string_view text_of(need what) {
    switch (what) {
    case need::nothing:
        return "-";
    case need::device:
        return "a device";
    case need::orvanta3:
        return "an Orvanta3";
    case need::palmetron:
        return "a Palmetron";
    case need::second_client:
        return "room for two clients";
    case need::save:
        return "an Orvanta3, `--save`";
    }
    return "";
}

std::vector<std::string> option_names() {
    const std::array<const char*, 2> words{"orvanta-conformance", "--help"};
    const std::string help = parse_options(static_cast<int>(words.size()), words.data()).text;
    const std::regex entry("\n  (?:-h,)?--([a-z]+)");
    std::vector<std::string> names;
    for (std::sregex_iterator found(help.begin(), help.end(), entry), end; found != end; ++found) {
        names.push_back((*found)[1]);
    }
    return names;
}

TEST(the_protocol, says_what_each_rule_says_in_the_order_of_the_table) {
    std::vector<table_row> expected;
    for (const rule& one : rules()) {
        expected.push_back({'`' + std::string(one.name) + '`', std::string(one.says)});
    }
    EXPECT_THAT(table_under(DOCS_FOLDER "/protocol.md", "## What a service does"),
                testing::ElementsAreArray(expected));
}

TEST(the_document_of_the_kit, has_each_rule_and_what_it_needs) {
    std::vector<table_row> expected;
    for (const rule& one : rules()) {
        expected.push_back({'`' + std::string(one.name) + '`', std::string(text_of(one.what))});
    }
    EXPECT_THAT(table_under(DOCS_FOLDER "/conformance.md", "## Rules"), testing::ElementsAreArray(expected));
}

TEST(the_document_of_the_kit, and_its_page_have_every_option) {
    const std::vector<std::string> names = option_names();
    EXPECT_EQ(names.size(), 9U);
    const std::string document = file(DOCS_FOLDER "/conformance.md");
    const std::string page = file(MAN_FOLDER "/orvanta-conformance.1");
    for (const std::string& name : names) {
        EXPECT_TRUE(std::regex_search(document, std::regex("\n[|] `--" + name + "[ `]"))) << name;
        EXPECT_TRUE(std::regex_search(page, std::regex("\n[.]It Fl -" + name + "[ \n]"))) << name;
    }
}

TEST(the_document_of_the_kit, counts_the_rules) {
    EXPECT_THAT(file(DOCS_FOLDER "/conformance.md"),
                HasSubstr("\n    " + std::to_string(rules().size()) + " rules: "));
}

TEST(rules, have_names_of_their_own_and_say_something) {
    std::set<std::string_view> names;
    for (const rule& one : rules()) {
        EXPECT_TRUE(names.insert(one.name).second) << one.name;
        EXPECT_FALSE(one.says.empty()) << one.name;
        EXPECT_EQ(find_rule(one.name), &one);
    }
    EXPECT_EQ(find_rule("nonsense"), nullptr);
}

// A request of the operation table that is answered has a rule that says so.
TEST(rules, name_the_answer_of_every_request) {
    using namespace vantu::orvanta::communication;
    for (const operation& row : operations) {
        if (row.answered_by == op_code::none) {
            continue;
        }
        const rule* const found = find_rule(std::string(row.name) + "_is_answered");
        ASSERT_NE(found, nullptr) << row.name;
        const std::string answer(row_of(row.answered_by, direction::to_client).name);
        EXPECT_THAT(std::string(found->says),
                    testing::StartsWith('`' + std::string(row.name) + "` is answered with `" + answer + '`'));
    }
}

} // namespace
} // namespace orvanta_tests
