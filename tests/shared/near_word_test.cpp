// The word that was probably meant.
#include "shared/near_word.hpp"

#include <array>
#include <gtest/gtest.h>
#include <string>

namespace {

using namespace vantu::orvanta;

constexpr std::array<std::string_view, 4> known_words{"list", "info", "version", "wait"};

TEST(a_near_word, needs_few_changes) {
    EXPECT_EQ(near_word("list", known_words), "list");
    EXPECT_EQ(near_word("lst", known_words), "list");
    EXPECT_EQ(near_word("ilst", known_words), "list");
    EXPECT_EQ(near_word("lisst", known_words), "list");
    EXPECT_EQ(near_word("lost", known_words), "list");
    EXPECT_EQ(near_word("versino", known_words), "version");
    EXPECT_EQ(near_word("verzjon", known_words), "version");
}

TEST(a_near_word, is_missing_where_much_would_have_to_change) {
    EXPECT_EQ(near_word("", known_words), "");
    EXPECT_EQ(near_word("lo", known_words), "");
    EXPECT_EQ(near_word("loss", known_words), "");
    EXPECT_EQ(near_word("vrzjon!", known_words), "");
    EXPECT_EQ(near_word(std::string(100000, 'l'), known_words), "");
}

TEST(a_hint, ends_the_line_of_an_error) {
    EXPECT_EQ(hint_for("wiat", known_words), "; wait would be right");
    EXPECT_EQ(hint_for("tomorrow", known_words), "");
}

} // namespace
