// Words to numbers, in the same way under every locale.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace vantu::orvanta::app {

// The value of a word of decimal digits; empty for a word with any other character. Throws
// std::invalid_argument("invalid stoi argument") for the empty word and
// std::out_of_range("stoi argument out of range") for a value above 2147483647.
[[nodiscard]] std::optional<std::uint64_t> parse_index(std::string_view word);

// The number with which a word of decimal digits and points begins ("1.2.3" gives 1.2); empty for a
// word with any other character. Throws std::invalid_argument("invalid stof argument") where there
// is none ("", ".", "..5") and std::out_of_range("stof argument out of range") for a value that a
// float cannot hold. A value too small for a float is 0.
[[nodiscard]] std::optional<float> parse_fraction(std::string_view word);

} // namespace vantu::orvanta::app
