// Taking lines of text apart.
#include "shared/text_lines.hpp"

#include <gtest/gtest.h>

namespace {

using namespace vantu::orvanta;

TEST(words_of_a_line, come_off_a_line_one_by_one) {
    std::string_view line = "  set\t1  handedness left \r";
    EXPECT_EQ(take_word(line), "set");
    EXPECT_EQ(take_word(line), "1");
    EXPECT_EQ(line, "handedness left");
    EXPECT_EQ(take_word(line), "handedness");
    EXPECT_EQ(take_word(line), "left");
    EXPECT_EQ(take_word(line), "");
}

TEST(a_text, is_parted_at_the_first_of_a_sign_alone) {
    const std::pair<std::string_view, std::optional<std::string_view>> both{"op", "66=7"};
    EXPECT_EQ(parted(" op = 66=7\t", '='), both);
    const std::pair<std::string_view, std::optional<std::string_view>> nothing_after{"op", ""};
    EXPECT_EQ(parted("op=", '='), nothing_after);
    const std::pair<std::string_view, std::optional<std::string_view>> whole{"op", std::nullopt};
    EXPECT_EQ(parted(" op ", '='), whole);
}

TEST(words_of_a_line, are_whole_numbers_only_as_a_whole) {
    EXPECT_EQ(whole_number("0"), 0U);
    EXPECT_EQ(whole_number("18446744073709551615"), 18446744073709551615U);
    EXPECT_EQ(whole_number("0xD0"), 208U);
    for (const char* wrong : {"", "0x", "-1", "+1", "1x", " 1", "18446744073709551616", "1.0"}) {
        EXPECT_EQ(whole_number(wrong), std::nullopt) << wrong;
    }
}

TEST(words_of_a_line, are_numbers_only_when_finite_and_whole) {
    EXPECT_EQ(real_number("0.25"), 0.25);
    EXPECT_EQ(real_number("1e-3"), 0.001);
    for (const char* wrong : {"", "nan", "inf", "0.5x", " 0.5", "+1"}) {
        EXPECT_EQ(real_number(wrong), std::nullopt) << wrong;
    }
}

TEST(lines, show_no_control_characters_whatever_they_are_given) {
    EXPECT_EQ(without_control_characters(std::string("a\nb\0c\x1F", 6)), "a?b?c?");
    EXPECT_EQ(without_control_characters("a\x7F"
                                         "b"),
              "a?b");
    // As UTF-8 writes U+0080 to U+009F.
    EXPECT_EQ(without_control_characters("a\xC2\x80"
                                         "b\xC2\x9F"
                                         "c"),
              "a?b?c");
    EXPECT_EQ(without_control_characters("a \xC2\xA0\xC3\x80\xE2\x82\xAC~"),
              "a \xC2\xA0\xC3\x80\xE2\x82\xAC~");
    EXPECT_EQ(without_control_characters("\xC2"), "\xC2");
}

} // namespace
