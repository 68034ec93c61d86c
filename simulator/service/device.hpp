// The simulated devices: their identities and their configurations.
#pragma once

#include "vantu/orvanta/communication/bodies.hpp"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace vantu::orvanta::simulator {

// The factor of gravity compensation has no unit: 0 carries none of the device's weight, 1 all of it.
inline constexpr float least_scaling_factor = 0.0F;
inline constexpr float greatest_scaling_factor = 1.0F;

// False for what is no number.
[[nodiscard]] constexpr bool is_scaling_factor(float value) noexcept {
    return value >= least_scaling_factor && value <= greatest_scaling_factor;
}

[[nodiscard]] constexpr bool is_handedness(std::uint8_t value) noexcept {
    return value == vantu_orvanta_handedness_right || value == vantu_orvanta_handedness_left;
}

struct configuration {
    bool gravity_compensation{true};
    float scaling_factor{0.75F};
    bool torque_scaling{true};
    std::uint8_t handedness{vantu_orvanta_handedness_right};

    bool operator==(const configuration&) const = default;
};

struct device {
    std::uint32_t id{0};
    std::uint32_t place{0}; // from 0 among the devices of its type
    communication::proto::device_description description{};
    std::uint8_t information[8]{};
    configuration settings;

    [[nodiscard]] bool is_orvanta3() const noexcept {
        return description.device_type == vantu_orvanta_device_type_orvanta3;
    }
};

inline constexpr std::size_t most_devices_of_a_type = 256;
inline constexpr std::uint32_t first_orvanta3_id = 1;
inline constexpr std::uint32_t first_palmetron_id = 1001;

// The device of a type at a place below most_devices_of_a_type, as it leaves the factory.
[[nodiscard]] device make_device(std::uint8_t device_type, std::uint32_t place);

// The devices by rising id. Identities depend on type and place alone, so that they are the same on
// every start. At most most_devices_of_a_type of each.
[[nodiscard]] std::vector<device> make_devices(std::size_t orvanta3_count, std::size_t palmetron_count);

// The device of that id, or null. The devices stand by rising id.
[[nodiscard]] device* find_device(std::span<device> devices, std::uint32_t id) noexcept;

// The device's unique number as 32 hexadecimal digits in lower case.
[[nodiscard]] std::string uuid_text(const device& which);

} // namespace vantu::orvanta::simulator
