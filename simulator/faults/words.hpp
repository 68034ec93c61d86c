// Taking lines of text apart, and saying which word was probably meant.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace vantu::orvanta::simulator {

// Without the blanks and tabs around it.
[[nodiscard]] std::string_view trimmed(std::string_view text) noexcept;

// Takes the first word off a text, and the blanks around it; empty where there is none.
[[nodiscard]] std::string_view take_word(std::string_view& text) noexcept;

// All of the text as a number in decimal, or in hexadecimal behind 0x.
[[nodiscard]] std::optional<std::uint64_t> whole_number(std::string_view text) noexcept;

// All of the text as a number like 0.25.
[[nodiscard]] std::optional<double> real_number(std::string_view text) noexcept;

// The word that takes the fewest changes to become this one, of single letters or of two neighbours' places;
// there is at least one word.
[[nodiscard]] std::string_view nearest_word(std::string_view to, std::span<const std::string_view> words);

} // namespace vantu::orvanta::simulator
