#include "ctl/settings/configuration.hpp"

#include <array>

namespace vantu::orvanta::ctl {
namespace {

constexpr std::array gravity_keys{key::gravity_compensation, key::scaling_factor};
constexpr std::array torque_keys{key::torque_scaling};
constexpr std::array hand_keys{key::handedness};

value_set values_of(const gravity_compensation& told) {
    return {{key::gravity_compensation, told.enabled}, {key::scaling_factor, told.scaling_factor}};
}

} // namespace

std::span<const key> keys_of(part which) noexcept {
    switch (which) {
    case part::gravity:
        return gravity_keys;
    case part::torque:
        return torque_keys;
    case part::hand:
        return hand_keys;
    }
    return {};
}

part part_of(key which) {
    switch (which) {
    case key::gravity_compensation:
    case key::scaling_factor:
        return part::gravity;
    case key::torque_scaling:
        return part::torque;
    case key::handedness:
        return part::hand;
    case key::orientation:
    case key::motor_current:
    case key::power_supply:
        break;
    }
    throw std::logic_error("a key that cannot be set belongs to no part");
}

value ask_orientation(connection& to, std::uint32_t device_id) {
    return to.ask<orientation>([device_id](session& service, auto done, auto time) {
        service.get_orientation(device_id, std::move(done), time);
    });
}

value_set ask_part(connection& to, std::uint32_t device_id, part which) {
    switch (which) {
    case part::gravity:
        return values_of(to.ask<gravity_compensation>([device_id](session& service, auto done, auto time) {
            service.get_gravity_compensation(device_id, std::move(done), time);
        }));
    case part::torque:
        return {
            {key::torque_scaling, to.ask<torque_scaling>([device_id](session& service, auto done, auto time) {
                                        service.get_torque_scaling(device_id, std::move(done), time);
                                    }).enabled}};
    case part::hand:
        return {{key::handedness, to.look_up(device_id).handedness}};
    }
    return {};
}

value_set set_part(connection& to, std::uint32_t device_id, part which, const value_set& wanted,
                   std::chrono::nanoseconds time) {
    switch (which) {
    case part::gravity: {
        const gravity_compensation both{std::get<bool>(wanted.at(key::gravity_compensation)),
                                        std::get<float>(wanted.at(key::scaling_factor))};
        return values_of(to.ask<gravity_compensation>([&](session& service, auto done, auto /*whole*/) {
            service.set_gravity_compensation(device_id, both, std::move(done), time);
        }));
    }
    case part::torque: {
        const bool on = std::get<bool>(wanted.at(key::torque_scaling));
        return {
            {key::torque_scaling, to.ask<torque_scaling>([&](session& service, auto done, auto /*whole*/) {
                                        service.set_torque_scaling(device_id, on, std::move(done), time);
                                    }).enabled}};
    }
    case part::hand: {
        const handedness hand = std::get<handedness>(wanted.at(key::handedness));
        return {{key::handedness, to.ask<handedness>([&](session& service, auto done, auto /*whole*/) {
                     service.set_handedness(device_id, hand, std::move(done), time);
                 })}};
    }
    }
    return {};
}

void save(connection& to, std::uint32_t device_id) {
    const auto answer = to.ask<saved_configuration>([device_id](session& service, auto done, auto time) {
        service.save(device_id, std::move(done), time);
    });
    if (answer.saved != 1) {
        throw failure_with_status(exit_status::refused, "save: the device answers " +
                                                            std::to_string(answer.saved) +
                                                            ", which is not that it has saved");
    }
}

} // namespace vantu::orvanta::ctl
