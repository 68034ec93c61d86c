// Menus and prompts.
#include "app/console.hpp"
#include "app/menus.hpp"
#include "app/support/recording_console.hpp"
#include "support/scratch_folder.hpp"

#include <cstdio>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>
#include <limits>
#include <sstream>
#include <stdexcept>
#include <string>

namespace {

using namespace vantu::orvanta::app;
using orvanta_tests::recording_console;
using testing::StrEq;
using testing::ThrowsMessage;

constexpr const char* prompt = "Select option: \t";
constexpr const char* out_of_range = "\t Selection out of range, please try again\n";
constexpr const char* no_index = "\tInvalid input, please provide an number\n";
constexpr const char* no_number = "\tInvalid input, please provide a number\n";

TEST(read_word, takes_one_word_and_leaves_the_rest_in_the_stream) {
    std::istringstream input(" \t\n one\ttwo\n\n\nthree");
    EXPECT_EQ("one", read_word(input));
    EXPECT_EQ('\t', input.peek());
    EXPECT_EQ("two", read_word(input));
    EXPECT_EQ("three", read_word(input));
}

TEST(read_word, gives_the_empty_word_at_the_end_of_input_and_ever_after) {
    std::istringstream input("last \n");
    EXPECT_EQ("last", read_word(input));
    EXPECT_EQ("", read_word(input));
    EXPECT_EQ("", read_word(input));
}

TEST(read_word, gives_the_empty_word_on_a_stream_error) {
    std::istringstream input("word");
    input.setstate(std::ios::badbit);
    EXPECT_EQ("", read_word(input));
}

TEST(make_indent, is_as_many_tabs_as_the_depth) {
    EXPECT_EQ("", make_indent(0));
    EXPECT_EQ("\t", make_indent(1));
    EXPECT_EQ("\t\t\t", make_indent(3));
}

TEST(print_menu, prints_a_line_an_option_with_its_index_and_three_blanks) {
    recording_console console;
    print_menu(console.terminal(), main_menu_options, 0);
    EXPECT_EQ("0   Find Orvanta3\n1   Get Device Info\n2   Get Device Configuration\n"
              "3   Device Settings\n4   Exit\n",
              console.output());
    EXPECT_EQ("", console.errors());
}

TEST(print_menu, indents_every_line_by_the_depth) {
    recording_console console;
    print_menu(console.terminal(), settings_menu_options, 1);
    EXPECT_EQ("\t0   Disable Gravity Compensation\n\t1   Enable Gravity Compensation\n"
              "\t2   Change Gravity Compensation Scaling\n\t3   Disable Torque Scaling\n"
              "\t4   Enable Torque Scaling\n\t5   Set Device to Left Handed\n"
              "\t6   Set Device to Right Handed\n\t7   Save Configuration\n\t8   Return\n",
              console.output());
}

TEST(print_menu, prints_nothing_for_an_empty_list) {
    recording_console console;
    print_menu(console.terminal(), {}, 2);
    EXPECT_EQ("", console.output());
}

struct selection {
    std::uint64_t choice;
    std::string output;
};

selection select_from(const std::string& input, std::uint64_t count = 5, unsigned depth = 0) {
    recording_console console(input);
    const std::uint64_t choice = select_option(console.terminal(), count, depth);
    EXPECT_EQ("", console.errors());
    return {choice, console.output()};
}

TEST(select_option, returns_an_index_below_the_count) {
    const selection made = select_from("4\n");
    EXPECT_EQ(4U, made.choice);
    EXPECT_EQ(prompt, made.output);
    EXPECT_EQ(0U, select_from("0\n").choice);
}

TEST(select_option, returns_an_index_equal_to_the_count) {
    const selection made = select_from("5\n");
    EXPECT_EQ(5U, made.choice);
    EXPECT_EQ(prompt, made.output);
}

TEST(select_option, answers_an_index_above_the_count_with_two_lines_and_asks_again) {
    const selection made = select_from("6 1");
    EXPECT_EQ(1U, made.choice);
    EXPECT_EQ(std::string(prompt) + out_of_range + no_index + prompt, made.output);
}

TEST(select_option, takes_leading_zeros_as_the_number_they_stand_before) {
    EXPECT_EQ(7U, select_from("007", 7).choice);
    EXPECT_EQ(std::string(prompt) + out_of_range + no_index + prompt, select_from("007 1").output);
}

TEST(select_option, answers_words_that_are_no_index_with_one_line_and_asks_again) {
    for (const std::string word : {"-1", "3x", "x", "hh", "HELP", "+1", "1.0"}) {
        const selection made = select_from(word + " 2");
        EXPECT_EQ(2U, made.choice) << word;
        EXPECT_EQ(std::string(prompt) + no_index + prompt, made.output) << word;
    }
}

TEST(select_option, returns_help_for_one_letter_h) {
    EXPECT_EQ(std::numeric_limits<std::uint64_t>::max(), HELP_CHOICE);
    EXPECT_EQ(HELP_CHOICE, select_from("h").choice);
    EXPECT_EQ(HELP_CHOICE, select_from("H").choice);
    EXPECT_EQ(prompt, select_from("h").output);
}

TEST(select_option, asks_as_often_as_it_takes) {
    std::string input;
    std::string expected = prompt;
    for (int i = 0; i < 100; ++i) {
        input += "x\n";
        expected += std::string(no_index) + prompt;
    }
    EXPECT_EQ(expected, select_from(input + "3\n").output);
}

TEST(select_option, ignores_blanks_around_a_word_and_empty_lines) {
    const selection made = select_from("\n\n   3   \n");
    EXPECT_EQ(3U, made.choice);
    EXPECT_EQ(prompt, made.output);
}

TEST(select_option, leaves_the_rest_of_the_line_to_the_next_prompt) {
    recording_console console("1 2\n");
    EXPECT_EQ(1U, select_option(console.terminal(), 5, 0));
    EXPECT_EQ(2U, select_option(console.terminal(), 5, 0));
    EXPECT_EQ(std::string(prompt) + prompt, console.output());
}

TEST(select_option, indents_the_prompt_and_its_answers) {
    EXPECT_EQ("\tSelect option: \t\t\t Selection out of range, please try again\n"
              "\t\tInvalid input, please provide an number\n\tSelect option: \t",
              select_from("9 2", 2, 1).output);
}

TEST(select_option, throws_at_the_end_of_input) {
    recording_console console;
    EXPECT_THAT([&] { (void)select_option(console.terminal(), 5, 0); },
                ThrowsMessage<std::invalid_argument>(StrEq("invalid stoi argument")));
    EXPECT_EQ(prompt, console.output());
}

TEST(select_option, throws_for_a_number_beyond_32_bits) {
    recording_console console("99999999999");
    EXPECT_THAT([&] { (void)select_option(console.terminal(), 5, 0); },
                ThrowsMessage<std::out_of_range>(StrEq("stoi argument out of range")));
}

struct number {
    std::optional<float> value;
    std::string output;
};

number prompt_with(const std::string& input) {
    recording_console console(input);
    const std::optional<float> value = prompt_number(console.terminal(), "How much", 2);
    EXPECT_EQ("", console.errors());
    return {value, console.output()};
}

TEST(prompt_number, returns_the_number_typed) {
    const number typed = prompt_with("0.5\n");
    EXPECT_EQ(0.5F, typed.value);
    EXPECT_EQ("\t\tHow much:\t", typed.output);
    EXPECT_EQ(0.5F, prompt_with(".5").value);
    EXPECT_EQ(5.0F, prompt_with("5.").value);
    EXPECT_EQ(1.2F, prompt_with("1.2.3").value);
}

TEST(prompt_number, returns_nothing_for_cancel) {
    const number typed = prompt_with("  cancel  \n");
    EXPECT_EQ(std::nullopt, typed.value);
    EXPECT_EQ("\t\tHow much:\t", typed.output);
}

TEST(prompt_number, answers_words_that_are_no_number_with_one_line_and_asks_again) {
    for (const std::string word : {"Cancel", "CANCEL", "cance", "cancel.", "-1", "1e3", "h"}) {
        const number typed = prompt_with(word + " 2");
        EXPECT_EQ(2.0F, typed.value) << word;
        EXPECT_EQ("\t\tHow much:\t\t\t" + std::string(no_number) + "\t\tHow much:\t", typed.output) << word;
    }
}

TEST(prompt_number, throws_at_the_end_of_input_and_for_a_lone_point) {
    for (const char* input : {"", "\n \n", "."}) {
        recording_console console(input);
        EXPECT_THAT([&] { (void)prompt_number(console.terminal(), "How much", 0); },
                    ThrowsMessage<std::invalid_argument>(StrEq("invalid stof argument")));
    }
}

TEST(prompt_number, prints_a_text_with_percent_signs_as_it_stands) {
    recording_console console("1");
    EXPECT_EQ(1.0F, prompt_number(console.terminal(), "100%n %s", 0));
    EXPECT_EQ("100%n %s:\t", console.output());
}

TEST(console, keeps_the_order_of_output_and_errors) {
    recording_console console;
    console.terminal().print("one ");
    console.terminal().print_error("two ");
    console.terminal().print("three ");
    console.terminal().print_error("four");
    EXPECT_EQ("one two three four", console.transcript());
    EXPECT_EQ("one three ", console.output());
    EXPECT_EQ("two four", console.errors());
}

TEST(console, flushes_what_others_wrote_to_the_output_before_it_reads) {
    std::istringstream input("word");
    const orvanta_tests::scratch_folder folder;
    const std::string path = folder.file("output");
    std::FILE* output = std::fopen(path.c_str(), "wb");
    ASSERT_NE(nullptr, output);
    ASSERT_EQ(0, std::setvbuf(output, nullptr, _IOFBF, 4096));
    console terminal(input, output, output);
    std::fputs("from elsewhere", output);
    (void)terminal.read_word();
    std::ifstream file(path);
    EXPECT_EQ("from elsewhere", std::string(std::istreambuf_iterator<char>(file), {}));
    std::fclose(output);
}

} // namespace
