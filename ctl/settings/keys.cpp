#include "ctl/settings/keys.hpp"

#include <algorithm>
#include <array>

namespace vantu::orvanta::ctl {
namespace {

constexpr std::array key_rows{
    key_row{key::orientation, "orientation", value_kind::quaternion, false,
            "the orientation, a quaternion r x y z"},
    key_row{key::gravity_compensation, "gravity-compensation", value_kind::on_off, true,
            "whether the gravity compensation is on"},
    key_row{key::scaling_factor, "scaling-factor", value_kind::fraction, true,
            "the factor of the gravity compensation"},
    key_row{key::torque_scaling, "torque-scaling", value_kind::on_off, true,
            "whether the torque scaling is on"},
    key_row{key::handedness, "handedness", value_kind::hand, true, "the hand for which the device is set up"},
    key_row{key::motor_current, "motor-current", value_kind::currents, false,
            "the currents of the three motors"},
    key_row{key::power_supply, "power-supply", value_kind::state, false, "the state of the power supply"},
};

consteval bool are_in_order() {
    for (std::size_t i = 0; i < key_rows.size(); ++i) {
        if (static_cast<std::size_t>(key_rows[i].id) != i) {
            return false;
        }
    }
    return key_rows.size() == static_cast<std::size_t>(key::power_supply) + 1;
}
static_assert(are_in_order());

constexpr std::array<std::string_view, 2> on_off_words{"on", "off"};
constexpr std::array<std::string_view, 2> hand_words{"left", "right"};

} // namespace

std::span<const key_row> keys() noexcept {
    return key_rows;
}

const key_row& row_of(key id) noexcept {
    return key_rows[static_cast<std::size_t>(id)];
}

const key_row* find_key(std::string_view name) noexcept {
    const auto* const found = std::find_if(key_rows.begin(), key_rows.end(),
                                           [name](const key_row& row) { return row.name == name; });
    return found == key_rows.end() ? nullptr : found;
}

std::span<const std::string_view> words_of(value_kind kind) noexcept {
    switch (kind) {
    case value_kind::on_off:
        return on_off_words;
    case value_kind::hand:
        return hand_words;
    case value_kind::quaternion:
    case value_kind::fraction:
    case value_kind::currents:
    case value_kind::state:
        return {};
    }
    return {};
}

std::string_view description_of(value_kind kind) noexcept {
    switch (kind) {
    case value_kind::quaternion:
        return "four numbers";
    case value_kind::on_off:
        return "on or off";
    case value_kind::fraction:
        return "a number from 0 to 1";
    case value_kind::hand:
        return "left or right";
    case value_kind::currents:
        return "three numbers";
    case value_kind::state:
        return "a number from 0 to 255";
    }
    return {};
}

} // namespace vantu::orvanta::ctl
