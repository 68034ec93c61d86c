// The printed reports on a device, and the names that they use.
#pragma once

#include "app/console.hpp"

#include "vantu/orvanta/communication/records.h"

#include <cstdint>

namespace vantu::orvanta::app {

// "Nil", "Orvanta3", "Palmetron", or "Unknow" for any other value.
[[nodiscard]] const char* device_type_name(std::uint8_t device_type);

// "Nil", "Right", "Left", or "Unknow" for any other value.
[[nodiscard]] const char* handedness_name(std::uint8_t handedness);

// "Off" for 0, else "On".
[[nodiscard]] const char* on_off_name(std::uint8_t enabled);

struct device_configuration {
    vantu_orvanta_orientation orientation;
    vantu_orvanta_config_gravity_compensation gravity_compensation;
    vantu_orvanta_config_torque_scaling torque_scaling;
    std::uint8_t handedness;
};

// Kind, short id and UUID.
void print_device_report(console& terminal, const vantu_orvanta_device& device);

void print_configuration_report(console& terminal, const device_configuration& configuration);

} // namespace vantu::orvanta::app
