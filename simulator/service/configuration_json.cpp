#include "simulator/service/configuration_json.hpp"

#include "vantu/orvanta/common/format.hpp"

namespace vantu::orvanta::simulator {
namespace {

bool read_flag(const located_value& value, const std::string& place) {
    if (value.kind != json_kind::boolean) {
        throw located_error(
            value.line, formatted("{} is {}; true or false would be right", place, description_of(value)));
    }
    return value.boolean;
}

void read_gravity(const located_value& value, const std::string& place, configuration& settings) {
    constexpr std::array<std::string_view, 2> members{"enabled", "scaling_factor"};
    require_object(value, place, members);
    if (const located_value* enabled = value.find("enabled")) {
        settings.gravity_compensation = read_flag(*enabled, place + " enabled");
    }
    if (const located_value* factor = value.find("scaling_factor")) {
        // Compared as it stands: a number beyond the range of float has no conversion to it.
        if (factor->kind != json_kind::number ||
            !(factor->number >= static_cast<double>(least_scaling_factor)) ||
            !(factor->number <= static_cast<double>(greatest_scaling_factor))) {
            throw located_error(factor->line,
                                formatted("{} scaling_factor is {}; a number from {} to {} would be right",
                                          place, description_of(*factor), least_scaling_factor,
                                          greatest_scaling_factor));
        }
        settings.scaling_factor = static_cast<float>(factor->number);
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
            settings.torque_scaling = read_flag(*enabled, place + " torque_scaling enabled");
        }
    }
    if (const located_value* handedness = value.find("handedness")) {
        const bool left = handedness->string == "left";
        if (!left && handedness->string != "right") {
            throw located_error(handedness->line,
                                formatted("{} handedness is {}; \"right\" or \"left\" would be right", place,
                                          description_of(*handedness)));
        }
        settings.handedness = left ? vantu_orvanta_handedness_left : vantu_orvanta_handedness_right;
    }
}

std::string configuration_json(const configuration& settings) {
    return formatted(R"({{"gravity_compensation": {{"enabled": {}, "scaling_factor": {}}}, )"
                     R"("torque_scaling": {{"enabled": {}}}, "handedness": "{}"}})",
                     settings.gravity_compensation, settings.scaling_factor, settings.torque_scaling,
                     settings.handedness == vantu_orvanta_handedness_left ? "left" : "right");
}

} // namespace vantu::orvanta::simulator
