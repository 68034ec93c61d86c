// The value of a key, and how it is written as text and as JSON and read from a command line.
#pragma once

#include "ctl/settings/keys.hpp"
#include "vantu/orvanta/device.hpp"

#include <array>
#include <cstdint>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace vantu::orvanta::ctl {

// The alternative that belongs to the key's kind.
using value = std::variant<bool, float, handedness, orientation, std::array<float, 3>, std::uint8_t>;

// In the order of the table.
using value_set = std::map<key, value>;

// "on", "0.75", "left", "1 0 0 0": the shortest numbers that read back the same.
[[nodiscard]] std::string text_of(const value& one);

// true, 0.75, "left", {"r", "x", "y", "z"}, an array; what is no number is null.
[[nodiscard]] nlohmann::ordered_json json_of(const value& one);

// A value of a kind that can be set; empty when the text is none.
[[nodiscard]] std::optional<value> value_of(value_kind kind, std::string_view text);
// The factor that a number stands for; empty when it is not from 0 to 1.
[[nodiscard]] std::optional<value> factor_of(double number);

// Whether two values of a key that can be set are the same.
[[nodiscard]] bool are_same(const value& one, const value& other);

} // namespace vantu::orvanta::ctl
