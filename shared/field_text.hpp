// The values of fields as text that people read and write.
#pragma once

#include "vantu/orvanta/communication/fields.hpp"

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vantu::orvanta {

// A field's value: whole numbers in decimal, floats with as few digits as give them back ("nan" and "inf"
// included), several values with commas between them, bytes in hexadecimal, a text up to its first zero and
// without control characters. The value has the field's size; that of a tail has any.
[[nodiscard]] std::string value_text(const communication::field& what, std::span<const std::byte> value);

// Writes what such a text says over a value. Whole numbers may be hexadecimal after 0x, a text is shorter
// than its field, and bytes are as many as the value has. Throws std::invalid_argument with one line, what is
// wrong and what would be right, and leaves the value as it was.
void write_value(const communication::field& what, std::string_view text, std::span<std::byte> value);

// The bytes of a text of hexadecimal digits, two each; empty where it is none.
[[nodiscard]] std::optional<std::vector<std::byte>> bytes_of_hexadecimal(std::string_view text);

// The field that a text names: "enabled", or one value of a field with several, as in "values[2]".
[[nodiscard]] std::optional<communication::placed_field> named_value(
    std::span<const communication::field> fields, std::string_view text);

} // namespace vantu::orvanta
