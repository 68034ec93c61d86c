#include "ctl/settings/values.hpp"

#include "vantu/orvanta/common/format.hpp"

#include <algorithm>
#include <charconv>
#include <nlohmann/json.hpp>

namespace vantu::orvanta::ctl {
namespace {

using json = nlohmann::ordered_json;

std::string digits_of(float number) {
    return formatted("{}", number);
}

// The double whose shortest text is that of the float: 0.1 in place of 0.10000000149011612.
double decimal_of(float number) {
    const std::string digits = digits_of(number);
    double read = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), read);
    return read;
}

struct text_writer {
    std::string operator()(bool on) const { return std::string(words_of(value_kind::on_off)[on ? 0 : 1]); }
    std::string operator()(float number) const { return digits_of(number); }
    std::string operator()(handedness hand) const { return name_of(hand); }
    std::string operator()(const orientation& of) const {
        return formatted("{} {} {} {}", of.r, of.x, of.y, of.z);
    }
    std::string operator()(const std::array<float, 3>& of) const {
        return formatted("{} {} {}", of[0], of[1], of[2]);
    }
    std::string operator()(std::uint8_t state) const { return std::to_string(state); }
};

struct json_writer {
    json operator()(bool on) const { return on; }
    json operator()(float number) const { return decimal_of(number); }
    json operator()(handedness hand) const { return name_of(hand); }
    json operator()(const orientation& of) const {
        return {{"r", decimal_of(of.r)},
                {"x", decimal_of(of.x)},
                {"y", decimal_of(of.y)},
                {"z", decimal_of(of.z)}};
    }
    json operator()(const std::array<float, 3>& of) const {
        return json::array({decimal_of(of[0]), decimal_of(of[1]), decimal_of(of[2])});
    }
    json operator()(std::uint8_t state) const { return state; }
};

std::optional<value> factor_in(std::string_view text) {
    double number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc{} && stop == end ? factor_of(number) : std::nullopt;
}

// The value that belongs to the word's place in the table.
std::optional<value> word_in(value_kind kind, std::string_view text, const std::array<value, 2>& meant) {
    const auto words = words_of(kind);
    const auto found = std::find(words.begin(), words.end(), text);
    return found == words.end() ? std::nullopt
                                : std::optional(meant.at(static_cast<std::size_t>(found - words.begin())));
}

} // namespace

std::string text_of(const value& one) {
    return std::visit(text_writer(), one);
}

nlohmann::ordered_json json_of(const value& one) {
    return std::visit(json_writer(), one);
}

std::optional<value> value_of(value_kind kind, std::string_view text) {
    switch (kind) {
    case value_kind::on_off:
        return word_in(kind, text, {true, false});
    case value_kind::hand:
        return word_in(kind, text, {handedness::left, handedness::right});
    case value_kind::fraction:
        return factor_in(text);
    case value_kind::quaternion:
    case value_kind::currents:
    case value_kind::state:
        return std::nullopt;
    }
    return std::nullopt;
}

std::optional<value> factor_of(double number) {
    if (!(number >= 0 && number <= 1)) {
        return std::nullopt;
    }
    // Without the sign of a zero.
    return number == 0 ? 0.0F : static_cast<float>(number);
}

bool are_same(const value& one, const value& other) {
    if (one.index() != other.index()) {
        return false;
    }
    if (const bool* on = std::get_if<bool>(&one)) {
        return *on == std::get<bool>(other);
    }
    if (const float* number = std::get_if<float>(&one)) {
        return *number == std::get<float>(other);
    }
    const handedness* hand = std::get_if<handedness>(&one);
    return hand != nullptr && *hand == std::get<handedness>(other);
}

} // namespace vantu::orvanta::ctl
