#include "app/reports.hpp"

#include <cstddef>
#include <string>

namespace vantu::orvanta::app {
namespace {

constexpr const char* hexadecimal_digits = "0123456789ABCDEF";

} // namespace

const char* device_type_name(std::uint8_t device_type) {
    switch (device_type) {
    case vantu_orvanta_device_type_none:
        return "Nil";
    case vantu_orvanta_device_type_orvanta3:
        return "Orvanta3";
    case vantu_orvanta_device_type_palmetron:
        return "Palmetron";
    default:
        return "Unknow"; // spelled so on purpose
    }
}

const char* handedness_name(std::uint8_t handedness) {
    switch (handedness) {
    case vantu_orvanta_handedness_none:
        return "Nil";
    case vantu_orvanta_handedness_right:
        return "Right";
    case vantu_orvanta_handedness_left:
        return "Left";
    default:
        return "Unknow"; // spelled so on purpose
    }
}

const char* on_off_name(std::uint8_t enabled) {
    return enabled != 0 ? "On" : "Off";
}

void print_device_report(console& terminal, const vantu_orvanta_device& device) {
    std::string uuid;
    std::size_t position = 0;
    for (const std::uint8_t byte : device.uuid) {
        if (position != 0 && position % 4 == 0) {
            uuid += '-';
        }
        uuid += hexadecimal_digits[byte >> 4U];
        uuid += hexadecimal_digits[byte & 0xFU];
        ++position;
    }
    terminal.print("\n\tDevice Type:\t%s\n\tID:\t\t%04X\n\tUUID:\t\t%s\n",
                   device_type_name(device.device_type), unsigned{device.short_id}, uuid.c_str());
}

void print_configuration_report(console& terminal, const device_configuration& configuration) {
    terminal.print("\n\tOrientation:\n\t   r = %7.4f\n\t   x = %7.4f\n\t   y = %7.4f\n\t   z = %7.4f\n",
                   double{configuration.orientation.r}, double{configuration.orientation.x},
                   double{configuration.orientation.y}, double{configuration.orientation.z});
    terminal.print("\n\tGravity Compensation: \t%s\n\t   Scaling Factor:\t%3.2f\n",
                   on_off_name(configuration.gravity_compensation.enabled),
                   double{configuration.gravity_compensation.scaling_factor});
    terminal.print("\n\tTorque Scaling:\t\t%s\n", on_off_name(configuration.torque_scaling.enabled));
    terminal.print("\n\tHandedness:\t\t%s\n", handedness_name(configuration.handedness));
}

} // namespace vantu::orvanta::app
