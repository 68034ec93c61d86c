#include "app/parse.hpp"

#include <charconv>
#include <stdexcept>
#include <system_error>

namespace vantu::orvanta::app {
namespace {

constexpr std::string_view digits = "0123456789";
constexpr std::string_view digits_and_point = "0123456789.";

bool consists_of(std::string_view word, std::string_view characters) {
    return word.find_first_not_of(characters) == std::string_view::npos;
}

bool is_below_one(std::string_view number) {
    return number.substr(0, number.find('.')).find_first_not_of('0') == std::string_view::npos;
}

} // namespace

std::optional<std::uint64_t> parse_index(std::string_view word) {
    if (!consists_of(word, digits)) {
        return std::nullopt;
    }
    std::int32_t value = 0;
    const auto result = std::from_chars(word.data(), word.data() + word.size(), value);
    if (result.ec == std::errc::invalid_argument) {
        throw std::invalid_argument("invalid stoi argument");
    }
    if (result.ec == std::errc::result_out_of_range) {
        throw std::out_of_range("stoi argument out of range");
    }
    return static_cast<std::uint64_t>(value);
}

std::optional<float> parse_fraction(std::string_view word) {
    if (!consists_of(word, digits_and_point)) {
        return std::nullopt;
    }
    float value = 0.0F;
    const auto result = std::from_chars(word.data(), word.data() + word.size(), value);
    if (result.ec == std::errc::invalid_argument) {
        throw std::invalid_argument("invalid stof argument");
    }
    if (result.ec == std::errc::result_out_of_range) {
        if (is_below_one(word)) {
            return 0.0F;
        }
        throw std::out_of_range("stof argument out of range");
    }
    return value;
}

} // namespace vantu::orvanta::app
