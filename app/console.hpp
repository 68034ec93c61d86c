// The tool's console: numbered menus and prompts over three standard streams.
#pragma once

#include <cstdint>
#include <cstdio>
#include <istream>
#include <optional>
#include <span>
#include <string>

namespace vantu::orvanta::app {

// The next word of a stream. Waits over empty lines; what follows the word stays in the stream. Empty
// at the end of input and ever after.
[[nodiscard]] std::string read_word(std::istream& input);

// The streams of the tool. Everything printed reaches its stream before the call returns, so that
// both streams together keep the order of the calls and an abrupt end loses nothing.
class console {
  public:
    console(std::istream& input, std::FILE* output, std::FILE* errors)
        : input_(input), output_(output), errors_(errors) {}

    // Menus, prompts and reports. Any thread.
    [[gnu::format(printf, 2, 3)]] void print(const char* format, ...);

    // Diagnostics. Any thread.
    [[gnu::format(printf, 2, 3)]] void print_error(const char* format, ...);

    // read_word on the console's input. One thread.
    [[nodiscard]] std::string read_word();

  private:
    std::istream& input_;
    std::FILE* output_;
    std::FILE* errors_;
};

using option_list = std::span<const char* const>;

// The return value of select_option for the word "h" or "H": above every count.
inline constexpr std::uint64_t HELP_CHOICE = ~std::uint64_t{0}; // NOLINT(readability-identifier-naming)

// depth tab characters.
[[nodiscard]] std::string make_indent(unsigned depth);

// One line an option: indentation, index from 0, three blanks, text.
void print_menu(console& terminal, option_list options, unsigned depth);

// Asks until it gets an index of 0 to count, the count itself included, or HELP_CHOICE. Throws as
// parse_index does, at the end of input too.
[[nodiscard]] std::uint64_t select_option(console& terminal, std::uint64_t count, unsigned depth);

// Asks until it gets a number, or "cancel", which gives empty. Throws as parse_fraction does, at the
// end of input too.
[[nodiscard]] std::optional<float> prompt_number(console& terminal, const char* text, unsigned depth);

} // namespace vantu::orvanta::app
