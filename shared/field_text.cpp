#include "shared/field_text.hpp"

#include "shared/text_lines.hpp"
#include "vantu/orvanta/common/format.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cstdint>
#include <iterator>
#include <limits>
#include <stdexcept>
#include <utility>

namespace vantu::orvanta {
namespace {

using communication::field;
using communication::field_type;

constexpr unsigned bits_of_a_byte = 8;

std::uint64_t read_number(std::span<const std::byte> bytes) {
    std::uint64_t number = 0;
    for (std::size_t i = bytes.size(); i-- > 0;) {
        number = number << bits_of_a_byte | std::to_integer<std::uint64_t>(bytes[i]);
    }
    return number;
}

void write_number(std::uint64_t number, std::span<std::byte> bytes) {
    for (std::byte& one : bytes) {
        one = static_cast<std::byte>(number);
        number >>= bits_of_a_byte;
    }
}

std::string hexadecimal(std::span<const std::byte> bytes) {
    std::string text;
    for (const std::byte one : bytes) {
        text += formatted("{:02x}", std::to_integer<unsigned>(one));
    }
    return text;
}

std::string number_text(field_type type, std::span<const std::byte> bytes) {
    const std::uint64_t number = read_number(bytes);
    return type == field_type::f32 ? formatted("{}", std::bit_cast<float>(static_cast<std::uint32_t>(number)))
                                   : formatted("{}", number);
}

[[noreturn]] void refuse(const field& what, std::string_view text, std::string_view right) {
    throw std::invalid_argument(
        formatted("{} is '{}'; {} would be right", what.name, without_control_characters(text), right));
}

std::uint64_t greatest_of(field_type type) {
    return std::numeric_limits<std::uint64_t>::max() >>
           (bits_of_a_byte * (sizeof(std::uint64_t) - communication::value_size_of(type)));
}

std::uint64_t parsed_number(const field& what, std::string_view text) {
    if (what.type != field_type::f32) {
        const auto number = whole_number(text);
        if (!number || *number > greatest_of(what.type)) {
            refuse(what, text, formatted("a whole number from 0 to {}", greatest_of(what.type)));
        }
        return *number;
    }
    float number = 0;
    const auto [stopped, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (text.empty() || error != std::errc{} || stopped != text.data() + text.size()) {
        refuse(what, text, "a number, nan, inf or -inf");
    }
    return std::bit_cast<std::uint32_t>(number);
}

void write_numbers(const field& what, std::string_view text, std::span<std::byte> value) {
    std::vector<std::uint64_t> numbers;
    for (std::optional<std::string_view> rest = text; rest;) {
        const auto [one, others] = parted(*rest, ',');
        numbers.push_back(parsed_number(what, one));
        rest = others;
    }
    if (numbers.size() != what.count) {
        refuse(what, text, formatted("{} numbers with commas between them", what.count));
    }
    const std::size_t size = communication::value_size_of(what.type);
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        write_number(numbers[i], value.subspan(i * size, size));
    }
}

void write_hexadecimal(const field& what, std::string_view text, std::span<std::byte> value) {
    const auto bytes = bytes_of_hexadecimal(text);
    if (!bytes || bytes->size() != value.size()) {
        refuse(what, text, formatted("{} hexadecimal digits", 2 * value.size()));
    }
    std::copy(bytes->begin(), bytes->end(), value.begin());
}

void write_text(const field& what, std::string_view text, std::span<std::byte> value) {
    if (text.size() >= value.size()) {
        refuse(what, text, formatted("a text of at most {} bytes", value.size() - 1));
    }
    std::fill(value.begin(), value.end(), std::byte{0});
    std::transform(text.begin(), text.end(), value.begin(),
                   [](char letter) { return static_cast<std::byte>(letter); });
}

} // namespace

std::string value_text(const field& what, std::span<const std::byte> value) {
    switch (what.type) {
    case field_type::bytes:
    case field_type::tail:
        return hexadecimal(value);
    case field_type::text: {
        const auto end = std::find(value.begin(), value.end(), std::byte{0});
        std::string text;
        std::transform(value.begin(), end, std::back_inserter(text),
                       [](std::byte one) { return static_cast<char>(one); });
        return without_control_characters(text);
    }
    case field_type::u8:
    case field_type::u16:
    case field_type::u32:
    case field_type::u64:
    case field_type::f32:
        break;
    }
    std::string text;
    const std::size_t size = communication::value_size_of(what.type);
    for (std::size_t i = 0; i < what.count; ++i) {
        text.append(i == 0 ? "" : ",").append(number_text(what.type, value.subspan(i * size, size)));
    }
    return text;
}

void write_value(const field& what, std::string_view text, std::span<std::byte> value) {
    switch (what.type) {
    case field_type::bytes:
    case field_type::tail:
        return write_hexadecimal(what, text, value);
    case field_type::text:
        return write_text(what, text, value);
    case field_type::u8:
    case field_type::u16:
    case field_type::u32:
    case field_type::u64:
    case field_type::f32:
        return write_numbers(what, text, value);
    }
}

std::optional<std::vector<std::byte>> bytes_of_hexadecimal(std::string_view text) {
    std::vector<std::byte> bytes(text.size() / 2);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        std::uint8_t byte = 0;
        const char* const begin = text.data() + 2 * i;
        const auto [stopped, error] = std::from_chars(begin, begin + 2, byte, 16);
        if (error != std::errc{} || stopped != begin + 2) {
            return std::nullopt;
        }
        bytes[i] = static_cast<std::byte>(byte);
    }
    return text.size() % 2 == 0 ? std::make_optional(std::move(bytes)) : std::nullopt;
}

std::optional<communication::placed_field> named_value(std::span<const field> fields, std::string_view text) {
    const std::size_t bracket = text.find('[');
    auto found = communication::find_field(fields, text.substr(0, bracket));
    if (!found || bracket == std::string_view::npos) {
        return found;
    }
    const bool is_number = found->what.type != field_type::text && found->what.type != field_type::tail;
    const auto index =
        text.back() == ']' ? whole_number(text.substr(bracket + 1, text.size() - bracket - 2)) : std::nullopt;
    if (!is_number || !index || *index >= found->what.count || found->what.count < 2) {
        return std::nullopt;
    }
    found->offset += *index * communication::value_size_of(found->what.type);
    found->what.count = 1;
    return found;
}

} // namespace vantu::orvanta
