#include "shared/text_lines.hpp"

#include <charconv>
#include <cmath>
#include <system_error>

namespace vantu::orvanta {
namespace {

constexpr std::string_view blanks = " \t\r";

} // namespace

std::string_view trimmed(std::string_view text) noexcept {
    const auto first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::pair<std::string_view, std::optional<std::string_view>> parted(std::string_view text,
                                                                    char sign) noexcept {
    const auto place = text.find(sign);
    if (place == std::string_view::npos) {
        return {trimmed(text), std::nullopt};
    }
    return {trimmed(text.substr(0, place)), trimmed(text.substr(place + 1))};
}

std::string_view take_word(std::string_view& text) noexcept {
    text = trimmed(text);
    const auto end = std::min(text.find_first_of(blanks), text.size());
    const std::string_view word = text.substr(0, end);
    text = trimmed(text.substr(end));
    return word;
}

std::optional<std::uint64_t> whole_number(std::string_view text) noexcept {
    int base = 10;
    if (text.starts_with("0x") || text.starts_with("0X")) {
        text.remove_prefix(2);
        base = 16;
    }
    std::uint64_t value = 0;
    const char* const end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, value, base);
    if (text.empty() || error != std::errc{} || stopped != end) {
        return std::nullopt;
    }
    return value;
}

std::optional<double> real_number(std::string_view text) noexcept {
    double value = 0;
    const char* const end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, value);
    if (text.empty() || error != std::errc{} || stopped != end || !std::isfinite(value)) {
        return std::nullopt;
    }
    return value;
}

std::string without_control_characters(std::string_view text) {
    const auto is_between = [](char letter, unsigned least, unsigned greatest) {
        const auto code = static_cast<unsigned char>(letter);
        return code >= least && code <= greatest;
    };
    std::string shown;
    for (std::size_t i = 0; i < text.size(); ++i) {
        // UTF-8 writes U+0080 to U+009F as 0xC2 and a byte of the same number.
        const bool is_pair = text[i] == '\xC2' && i + 1 < text.size() && is_between(text[i + 1], 0x80, 0x9F);
        const bool is_control = is_pair || is_between(text[i], 0, 0x1F) || text[i] == '\x7F';
        shown += is_control ? '?' : text[i];
        i += is_pair ? 1 : 0;
    }
    return shown;
}

} // namespace vantu::orvanta
