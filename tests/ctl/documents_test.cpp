// Help, manual page, guide and completions have all commands, options, keys and exit statuses of the tables.
#include "ctl/arguments/command_table.hpp"
#include "ctl/arguments/help.hpp"
#include "ctl/completion/candidates.hpp"
#include "ctl/report/exit_status.hpp"
#include "ctl/settings/keys.hpp"
#include "docs/markdown_table.hpp"
#include "docs/source_texts.hpp"

#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using namespace orvanta_tests;
using namespace vantu::orvanta::ctl;
using testing::HasSubstr;

const std::string guide = CHECKOUT "/docs/orvantactl.md";

std::string number_of(exit_status status) {
    return std::to_string(static_cast<int>(status));
}

// The lines ".It ..." of a section of the manual page.
std::vector<std::string> items_of(const std::string& section) {
    std::istringstream page(text_of_file(CHECKOUT "/ctl/man/orvantactl.1"));
    std::vector<std::string> items;
    bool is_inside = false;
    for (std::string line; std::getline(page, line);) {
        if (line.starts_with(".Sh ")) {
            is_inside = line == ".Sh " + section;
        } else if (is_inside && line.starts_with(".It ")) {
            items.push_back(line.substr(4));
        }
    }
    return items;
}

// The names that open the rows of a table of the guide, without marks and values.
std::vector<std::string> rows_of(const std::string& heading) {
    std::vector<std::string> names;
    for (const table_row& row : table_under(guide, heading)) {
        std::string name = row.front();
        name.erase(std::remove(name.begin(), name.end(), '`'), name.end());
        names.push_back(name.substr(0, name.find(' ')));
    }
    return names;
}

template <typename Rows> std::vector<std::string> names_of(const Rows& rows) {
    std::vector<std::string> names;
    for (const auto& row : rows) {
        names.emplace_back(row.name);
    }
    return names;
}

std::vector<std::string> candidates_of(const std::vector<std::string>& words) {
    std::vector<std::string> found;
    for (const candidate& one :
         candidates_for(words, [] { return std::vector<vantu::orvanta::device>(); }).words) {
        found.push_back(one.word);
    }
    return found;
}

// "Fl -json" for "--json".
std::string mandoc_option(std::string_view name) {
    return "Fl " + std::string(name.substr(1));
}

std::vector<std::string> statuses() {
    std::vector<std::string> numbers;
    for (const exit_status_row& row : exit_statuses()) {
        numbers.push_back(number_of(row.status));
    }
    return numbers;
}

TEST(commands_of_the_table, are_in_the_help_the_manual_and_the_guide) {
    const std::vector<std::string> items = items_of("COMMANDS");
    ASSERT_EQ(items.size(), commands().size());
    const std::string text = text_of_file(guide);
    for (std::size_t i = 0; i < items.size(); ++i) {
        const std::string name(commands()[i].name);
        EXPECT_THAT(items[i] + " ", testing::StartsWith("Cm " + name + " "));
        EXPECT_THAT(help_of_program(), HasSubstr("\n  " + name + " "));
        EXPECT_THAT(text, HasSubstr("orvantactl " + name)) << "the guide shows it";
    }
    EXPECT_EQ(candidates_of({""}), names_of(commands()));
}

TEST(options_of_the_table, are_in_the_manual_and_the_guide_and_no_others) {
    std::vector<std::string> items;
    for (const std::string& item : items_of("OPTIONS")) {
        if (item != "Fl h , -help") {
            items.push_back(item.substr(0, item.find(" Ar ")));
        }
    }
    std::vector<std::string> wanted;
    for (const option_row& row : options()) {
        wanted.push_back(mandoc_option(row.name));
    }
    EXPECT_THAT(items, testing::UnorderedElementsAreArray(wanted));
    EXPECT_EQ(rows_of("## Options"), names_of(options()));
}

TEST(options_of_the_table, are_in_the_help_and_the_completions_of_their_commands) {
    for (const command_row& command : commands()) {
        std::vector<std::string> wanted{"--help"};
        for (const option_row& row : options()) {
            if (goes_with(row.id, &command)) {
                wanted.emplace_back(row.name);
                EXPECT_THAT(help_of_command(command), HasSubstr("\n  " + option_text(row) + " "));
            }
        }
        EXPECT_EQ(candidates_of({std::string(command.name), "-"}), wanted) << command.name;
    }
}

TEST(formats_of_the_table, are_in_the_manual_and_the_guide) {
    const std::string page = text_of_file(CHECKOUT "/ctl/man/orvantactl.1");
    const std::string text = text_of_file(guide);
    for (const format_row& row : formats()) {
        EXPECT_THAT(page, HasSubstr("\n.Cm " + std::string(row.name)));
        EXPECT_THAT(text, HasSubstr("`" + std::string(row.name) + "`"));
    }
}

TEST(keys_of_the_table, are_in_the_help_the_manual_and_the_guide) {
    std::vector<std::string> items;
    for (const key_row& row : keys()) {
        items.push_back("Cm " + std::string(row.name));
        EXPECT_THAT(help_of_command(*find_command("get")), HasSubstr("\n  " + std::string(row.name) + " "));
    }
    EXPECT_EQ(items_of("KEYS"), items);
    EXPECT_EQ(candidates_of({"get", ""}), names_of(keys()));

    const std::vector<table_row> rows = table_under(guide, "## Settings");
    ASSERT_EQ(rows.size(), keys().size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        EXPECT_EQ(rows[i][0], "`" + std::string(keys()[i].name) + "`");
        EXPECT_EQ(rows[i][2], keys()[i].can_be_set ? "yes" : "no");
    }
}

TEST(events_of_wait, are_in_the_manual_and_the_guide) {
    const std::string page = text_of_file(CHECKOUT "/ctl/man/orvantactl.1");
    EXPECT_THAT(page, HasSubstr(".It Cm wait Op Cm device | removal | service\n"));
    EXPECT_EQ(names_of(words_of(words_kind::event)),
              (std::vector<std::string>{"device", "removal", "service"}));
    EXPECT_THAT(text_of_file(guide), testing::AllOf(HasSubstr("wait removal"), HasSubstr("wait service")));
}

TEST(exit_statuses_of_the_table, are_all_that_have_a_name) {
    std::vector<std::string> named;
    for (int number = 0; number < 256; ++number) {
        if (std::string(name_of(static_cast<exit_status>(number))) != "unknown") {
            named.push_back(std::to_string(number));
        }
    }
    EXPECT_EQ(statuses(), named);
}

TEST(exit_statuses_of_the_table, are_in_the_help_the_manual_and_the_guide) {
    EXPECT_EQ(items_of("EXIT STATUS"), statuses());
    const std::vector<table_row> rows = table_under(guide, "## Exit statuses");
    ASSERT_EQ(rows.size(), exit_statuses().size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const exit_status_row& row = exit_statuses()[i];
        const std::string kind = "`" + std::string(name_of(row.status)) + "`";
        EXPECT_EQ(rows[i], (table_row{number_of(row.status), kind, std::string(row.meaning)}));
        EXPECT_THAT(help_of_program(), HasSubstr("\n  " + number_of(row.status) + " "));
    }
}

} // namespace
