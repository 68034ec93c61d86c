#include "values.hpp"

#include <algorithm>
#include <iterator>
#include <string>

namespace vantu::orvanta {
namespace {

std::string uuid_text(const std::uint8_t (&uuid)[16]) {
    char text[VANTU_ORVANTA_UUID_TEXT_SIZE];
    vantu_orvanta_uuid_text(uuid, text);
    return text;
}

} // namespace

const char* name_of(device_type type) noexcept {
    return vantu_orvanta_device_type_name(static_cast<std::uint8_t>(type));
}

const char* name_of(handedness hand) noexcept {
    return vantu_orvanta_handedness_name(static_cast<std::uint8_t>(hand));
}

device value_of(std::uint32_t device_id, const vantu_orvanta_device& record) {
    device value;
    value.id = device_id;
    value.type = static_cast<device_type>(record.device_type);
    value.short_id = record.short_id;
    value.uuid = uuid_text(record.uuid);
    if (record.device_type == vantu_orvanta_device_type_orvanta3) {
        value.handedness = static_cast<handedness>(record.detail.orvanta3.handedness);
    }
    std::copy(std::begin(record.information), std::end(record.information), value.information.begin());
    return value;
}

orientation value_of(const vantu_orvanta_orientation& record) {
    return {record.r, record.x, record.y, record.z};
}

gravity_compensation value_of(const vantu_orvanta_config_gravity_compensation& record) {
    return {record.enabled != 0, record.scaling_factor};
}

torque_scaling value_of(const vantu_orvanta_config_torque_scaling& record) {
    return {record.enabled != 0};
}

handedness value_of(const vantu_orvanta_config_handedness& record) {
    return static_cast<handedness>(record.handedness);
}

saved_configuration value_of(const vantu_orvanta_config_save& record) {
    return {record.saved};
}

vantu_orvanta_config_gravity_compensation record_of(const gravity_compensation& value) {
    return {static_cast<std::uint8_t>(value.enabled ? 1 : 0), value.scaling_factor};
}

vantu_orvanta_config_torque_scaling record_of(const torque_scaling& value) {
    return {static_cast<std::uint8_t>(value.enabled ? 1 : 0)};
}

cursor_sample sample_of(const vantu_orvanta_event& event, std::uint64_t number, std::int64_t now_ns) {
    const auto record = record_in<vantu_orvanta_cursor_state>(event);
    cursor_sample sample;
    sample.device_id = event.device_id;
    sample.stream = event.event_type == vantu_orvanta_event_cursor_state ? 1 : 2;
    sample.number = number;
    sample.received = std::chrono::steady_clock::time_point(std::chrono::nanoseconds(now_ns));
    std::copy(std::begin(record.values), std::end(record.values), sample.values.begin());
    return sample;
}

motor_current motor_current_of(const vantu_orvanta_event& event) {
    const auto record = record_in<vantu_orvanta_status_motor_current>(event);
    return {event.device_id, {record.values[0], record.values[1], record.values[2]}};
}

power_supply power_supply_of(const vantu_orvanta_event& event) {
    return {event.device_id, record_in<vantu_orvanta_status_power_supply>(event).state};
}

bool has_details(const vantu_orvanta_device& record) {
    const bool has_hand = record.device_type == vantu_orvanta_device_type_orvanta3 &&
                          record.detail.orvanta3.handedness != vantu_orvanta_handedness_none;
    return has_hand || std::any_of(std::begin(record.information), std::end(record.information),
                                   [](std::uint8_t byte) { return byte != 0; });
}

std::vector<std::uint32_t> device_ids(vantu_orvanta_context* context) {
    std::vector<std::uint32_t> ids(16);
    for (;;) {
        std::size_t count = ids.size();
        const std::int32_t code = vantu_orvanta_device_ids(context, ids.data(), &count);
        if (code != vantu_orvanta_buffer_full_or_empty) {
            ids.resize(code == vantu_orvanta_success ? count : 0);
            return ids;
        }
        ids.resize(2 * ids.size());
    }
}

} // namespace vantu::orvanta
