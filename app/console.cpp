#include "app/console.hpp"

#include "app/parse.hpp"

#include <cstdarg>

namespace vantu::orvanta::app {

std::string read_word(std::istream& input) {
    std::string word;
    input >> word;
    return word;
}

void console::print(const char* format, ...) {
    va_list values;
    va_start(values, format);
    std::vfprintf(output_, format, values);
    va_end(values);
    std::fflush(output_);
}

void console::print_error(const char* format, ...) {
    std::fflush(output_);
    va_list values;
    va_start(values, format);
    std::vfprintf(errors_, format, values);
    va_end(values);
    std::fflush(errors_);
}

std::string console::read_word() {
    std::fflush(output_);
    return app::read_word(input_);
}

std::string make_indent(unsigned depth) {
    return std::string(depth, '\t');
}

void print_menu(console& terminal, option_list options, unsigned depth) {
    const std::string indent = make_indent(depth);
    std::int32_t index = 0;
    for (const char* option : options) {
        terminal.print("%s%d   %s\n", indent.c_str(), index, option);
        ++index;
    }
}

std::uint64_t select_option(console& terminal, std::uint64_t count, unsigned depth) {
    const std::string indent = make_indent(depth);
    for (;;) {
        terminal.print("%sSelect option: \t", indent.c_str());
        const std::string word = terminal.read_word();
        if (word == "h" || word == "H") {
            return HELP_CHOICE;
        }
        const std::optional<std::uint64_t> index = parse_index(word);
        if (index && *index <= count) {
            return *index;
        }
        if (index) {
            terminal.print("%s\t Selection out of range, please try again\n", indent.c_str());
        }
        terminal.print("%s\tInvalid input, please provide an number\n", indent.c_str());
    }
}

std::optional<float> prompt_number(console& terminal, const char* text, unsigned depth) {
    const std::string indent = make_indent(depth);
    for (;;) {
        terminal.print("%s%s:\t", indent.c_str(), text);
        const std::string word = terminal.read_word();
        if (word == "cancel") {
            return std::nullopt;
        }
        if (const std::optional<float> number = parse_fraction(word)) {
            return number;
        }
        terminal.print("%s\tInvalid input, please provide a number\n", indent.c_str());
    }
}

} // namespace vantu::orvanta::app
