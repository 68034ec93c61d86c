#include "simulator/service/configuration_json.hpp"

#include "vantu/orvanta/common/format.hpp"

namespace vantu::orvanta::simulator {
namespace {

void read_gravity(const located_value& value, const std::string& place, configuration& settings) {
    constexpr std::array<std::string_view, 2> members{"enabled", "scaling_factor"};
    require_object(value, place, members);
    if (const located_value* enabled = value.find("enabled")) {
        settings.gravity_compensation = require_flag(*enabled, place + " enabled");
    }
    if (const located_value* factor = value.find("scaling_factor")) {
        settings.scaling_factor = static_cast<float>(
            require_number(*factor, place + " scaling_factor", static_cast<double>(least_scaling_factor),
                           static_cast<double>(greatest_scaling_factor)));
    }
}

} // namespace

void read_configuration(const located_value& value, const std::string& place, configuration& settings) {
    require_object(value, place, configuration_members);
    if (const located_value* gravity = value.find("gravity_compensation")) {
        read_gravity(*gravity, place + " gravity_compensation", settings);
    }
    if (const located_value* torque = value.find("torque_scaling")) {
        constexpr std::array<std::string_view, 1> members{"enabled"};
        require_object(*torque, place + " torque_scaling", members);
        if (const located_value* enabled = torque->find("enabled")) {
            settings.torque_scaling = require_flag(*enabled, place + " torque_scaling enabled");
        }
    }
    if (const located_value* handedness = value.find("handedness")) {
        constexpr std::array<std::string_view, 2> words{"right", "left"};
        settings.handedness = require_word(*handedness, place + " handedness", words) == 0
                                  ? vantu_orvanta_handedness_right
                                  : vantu_orvanta_handedness_left;
    }
}

std::string configuration_json(const configuration& settings) {
    return formatted(R"({{"gravity_compensation": {{"enabled": {}, "scaling_factor": {}}}, )"
                     R"("torque_scaling": {{"enabled": {}}}, "handedness": "{}"}})",
                     settings.gravity_compensation, settings.scaling_factor, settings.torque_scaling,
                     settings.handedness == vantu_orvanta_handedness_left ? "left" : "right");
}

} // namespace vantu::orvanta::simulator
