// Lines of text: taking them apart, and keeping them fit to be shown.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace vantu::orvanta {

// Without the blanks and tabs around it.
[[nodiscard]] std::string_view trimmed(std::string_view text) noexcept;

// The text before the first such sign, and that after it where there is one; without the blanks around them.
[[nodiscard]] std::pair<std::string_view, std::optional<std::string_view>> parted(std::string_view text,
                                                                                  char sign) noexcept;

// Takes the first word off a text, and the blanks around it; empty where there is none.
[[nodiscard]] std::string_view take_word(std::string_view& text) noexcept;

// All of the text as a number in decimal, or in hexadecimal after 0x.
[[nodiscard]] std::optional<std::uint64_t> whole_number(std::string_view text) noexcept;

// All of the text as a number like 0.25.
[[nodiscard]] std::optional<double> real_number(std::string_view text) noexcept;

// The text with a question mark in the place of each control character: U+0000 to U+001F and U+007F to
// U+009F.
[[nodiscard]] std::string without_control_characters(std::string_view text);

} // namespace vantu::orvanta
