// Words to numbers.
#include "app/parse.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iomanip>
#include <limits>
#include <locale>
#include <sstream>
#include <stdexcept>
#include <string>

namespace {

using testing::StrEq;
using testing::ThrowsMessage;
using vantu::orvanta::app::parse_fraction;
using vantu::orvanta::app::parse_index;

// A digit many times over, and what follows it.
std::string run_of(char digit, std::size_t count, const std::string& end = {}) {
    std::ostringstream text;
    text << std::setfill(digit) << std::setw(static_cast<int>(count)) << "" << end;
    return text.str();
}

TEST(parse_index, converts_decimal_digits) {
    EXPECT_EQ(0U, parse_index("0"));
    EXPECT_EQ(4U, parse_index("4"));
    EXPECT_EQ(2147483647U, parse_index("2147483647"));
}

TEST(parse_index, ignores_leading_zeros_however_many) {
    EXPECT_EQ(7U, parse_index("007"));
    EXPECT_EQ(0U, parse_index("000"));
    EXPECT_EQ(7U, parse_index(run_of('0', 5000, "7")));
}

TEST(parse_index, gives_nothing_for_any_character_that_is_no_digit) {
    for (const char* word :
         {"-1", "+1", "3x", "x3", "x", "1.0", " 1", "1 ", "0x1", "1e3", "hh", "\xB2", "."}) {
        EXPECT_EQ(std::nullopt, parse_index(word)) << word;
    }
    EXPECT_EQ(std::nullopt, parse_index(std::string_view("1\0", 2)));
    EXPECT_EQ(std::nullopt, parse_index("99999999999x"));
}

TEST(parse_index, rejects_the_empty_word_as_an_invalid_argument) {
    EXPECT_THAT([] { (void)parse_index(""); },
                ThrowsMessage<std::invalid_argument>(StrEq("invalid stoi argument")));
}

TEST(parse_index, rejects_what_a_signed_32_bit_number_cannot_hold) {
    for (const std::string& word : {std::string("2147483648"), std::string("4294967296"),
                                    std::string("99999999999"), run_of('9', 5000)}) {
        EXPECT_THAT([&] { (void)parse_index(word); },
                    ThrowsMessage<std::out_of_range>(StrEq("stoi argument out of range")))
            << word;
    }
}

TEST(parse_fraction, converts_digits_with_or_without_a_point) {
    EXPECT_EQ(0.5F, parse_fraction("0.5"));
    EXPECT_EQ(0.5F, parse_fraction(".5"));
    EXPECT_EQ(5.0F, parse_fraction("5."));
    EXPECT_EQ(5.0F, parse_fraction("5"));
    EXPECT_EQ(0.0F, parse_fraction("0"));
    EXPECT_EQ(0.75F, parse_fraction("000.750"));
    EXPECT_EQ(0.1F, parse_fraction("0.1"));
}

TEST(parse_fraction, ignores_what_follows_the_number) {
    EXPECT_EQ(1.2F, parse_fraction("1.2.3"));
    EXPECT_EQ(5.0F, parse_fraction("5.."));
    EXPECT_EQ(0.5F, parse_fraction(".5."));
}

TEST(parse_fraction, gives_nothing_for_any_character_that_is_neither_digit_nor_point) {
    for (const char* word : {"-1", "+1", "1e3", "1,5", " 1", "inf", "nan", "0x1", "Cancel", "cancel", "1f"}) {
        EXPECT_EQ(std::nullopt, parse_fraction(word)) << word;
    }
}

TEST(parse_fraction, rejects_words_without_a_number_as_an_invalid_argument) {
    for (const char* word : {"", ".", "..5", "..", "...1"}) {
        EXPECT_THAT([&] { (void)parse_fraction(word); },
                    ThrowsMessage<std::invalid_argument>(StrEq("invalid stof argument")))
            << word;
    }
}

TEST(parse_fraction, rejects_what_a_float_cannot_hold) {
    for (const std::string& word :
         {run_of('9', 39), run_of('9', 5000, ".5"), std::string("340282356779733661637539395458142568448")}) {
        EXPECT_THAT([&] { (void)parse_fraction(word); },
                    ThrowsMessage<std::out_of_range>(StrEq("stof argument out of range")))
            << word;
    }
}

TEST(parse_fraction, takes_the_largest_float_and_all_that_rounds_to_it) {
    EXPECT_EQ(std::numeric_limits<float>::max(), parse_fraction("340282346638528859811704183484516925440"));
    EXPECT_EQ(std::numeric_limits<float>::max(), parse_fraction("340282356779733661637539395458142568447"));
}

TEST(parse_fraction, takes_numbers_too_small_for_a_float_as_the_nearest_there_is) {
    EXPECT_EQ(0.0F, parse_fraction("0." + run_of('0', 60, "1")));
    EXPECT_EQ(0.0F, parse_fraction("." + run_of('0', 5000, "1")));
    EXPECT_EQ(0.0F, parse_fraction("0." + run_of('0', 60, "1.9")));
    EXPECT_EQ(std::numeric_limits<float>::denorm_min(), parse_fraction("0." + run_of('0', 44, "14")));
}

TEST(parse_fraction, reads_long_words_to_their_end) {
    EXPECT_EQ(7.25F, parse_fraction(run_of('0', 5000, "7.25" + run_of('0', 5000))));
}

class german_numbers : public std::numpunct<char> {
  protected:
    char do_decimal_point() const override { return ','; }
};

TEST(parse, does_not_depend_on_the_locale) {
    const std::locale before = std::locale::global(std::locale(std::locale(), new german_numbers));
    std::ostringstream affected;
    affected << 0.5;
    EXPECT_EQ("0,5", affected.str());
    EXPECT_EQ(0.5F, parse_fraction("0.5"));
    EXPECT_EQ(std::nullopt, parse_fraction("0,5"));
    EXPECT_EQ(1234U, parse_index("1234"));
    std::locale::global(before);
}

} // namespace
