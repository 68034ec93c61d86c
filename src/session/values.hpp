// The values of class session, made of the records of events.
#pragma once

#include "vantu/orvanta/device.hpp"
#include "vantu/orvanta/orvanta.h"

#include <cstdint>
#include <cstring>
#include <vector>

namespace vantu::orvanta {

// A copy of the record that an event of its type carries.
template <typename Record> [[nodiscard]] Record record_in(const vantu_orvanta_event& event) {
    static_assert(sizeof(Record) <= sizeof(event.payload));
    Record record;
    std::memcpy(&record, event.payload, sizeof record);
    return record;
}

[[nodiscard]] device value_of(std::uint32_t device_id, const vantu_orvanta_device& record);
[[nodiscard]] orientation value_of(const vantu_orvanta_orientation& record);
[[nodiscard]] gravity_compensation value_of(const vantu_orvanta_config_gravity_compensation& record);
[[nodiscard]] torque_scaling value_of(const vantu_orvanta_config_torque_scaling& record);
[[nodiscard]] handedness value_of(const vantu_orvanta_config_handedness& record);
[[nodiscard]] saved_configuration value_of(const vantu_orvanta_config_save& record);

[[nodiscard]] vantu_orvanta_config_gravity_compensation record_of(const gravity_compensation& value);
[[nodiscard]] vantu_orvanta_config_torque_scaling record_of(const torque_scaling& value);

[[nodiscard]] cursor_sample sample_of(const vantu_orvanta_event& event, std::uint64_t number,
                                      std::int64_t now_ns);
[[nodiscard]] motor_current motor_current_of(const vantu_orvanta_event& event);
[[nodiscard]] power_supply power_supply_of(const vantu_orvanta_event& event);

// Whether the details of a device have come, as far as its record tells.
[[nodiscard]] bool has_details(const vantu_orvanta_device& record);

// The ids of all devices in the context's table, however many they are.
[[nodiscard]] std::vector<std::uint32_t> device_ids(vantu_orvanta_context* context);

} // namespace vantu::orvanta
