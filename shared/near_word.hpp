// The word that was probably meant by one that does not exist.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace vantu::orvanta {

// The nearest of the words; empty when none is near: more than a third of the text would have to change. A
// change adds, drops or replaces a letter, or swaps two neighbours.
[[nodiscard]] std::string_view near_word(std::string_view text, std::span<const std::string_view> words);

// "; WORD would be right" for such a word, else nothing: the end of an error's line.
[[nodiscard]] std::string hint_for(std::string_view text, std::span<const std::string_view> words);

} // namespace vantu::orvanta
