// The requests of the flat API: argument checks, then one datagram.
#include "send.hpp"
#include "vantu/orvanta/common/version.hpp"
#include "vantu/orvanta/communication/bodies.hpp"
#include "vantu/orvanta/orvanta.h"

using namespace vantu::orvanta;
using namespace vantu::orvanta::communication;

namespace {

bool names_a_device(const vantu_orvanta_context* context, std::uint32_t device_id) {
    return context != nullptr && device_id != 0;
}

// A request whose body only names the device.
template <std::uint8_t code>
std::int32_t query(vantu_orvanta_context* context, std::uint32_t device_id, std::uint8_t tag) {
    if (!names_a_device(context, device_id)) {
        return vantu_orvanta_invalid_argument;
    }
    return send_operation<code>(*context, tag, {device_id});
}

// A request that carries a record.
template <std::uint8_t code, typename Record>
std::int32_t change(vantu_orvanta_context* context, std::uint32_t device_id, std::uint8_t tag,
                    const Record* record) {
    if (!names_a_device(context, device_id) || record == nullptr) {
        return vantu_orvanta_invalid_argument;
    }
    return send_operation<code>(*context, tag, {device_id, *record});
}

} // namespace

std::int32_t vantu_orvanta_device_open(vantu_orvanta_context* context, std::uint32_t device_id,
                                       std::uint8_t tag, std::uint16_t value) {
    const proto::open_argument argument{value};
    return change<op_code::device_open>(context, device_id, tag, &argument);
}

std::int32_t vantu_orvanta_device_close(vantu_orvanta_context* context, std::uint32_t device_id,
                                        std::uint8_t tag) {
    return query<op_code::device_close>(context, device_id, tag);
}

std::int32_t vantu_orvanta_orientation_get(vantu_orvanta_context* context, std::uint32_t device_id,
                                           std::uint8_t tag) {
    return query<op_code::orientation_get>(context, device_id, tag);
}

std::int32_t vantu_orvanta_config_save_request(vantu_orvanta_context* context, std::uint32_t device_id,
                                               std::uint8_t tag) {
    return query<op_code::config_save>(context, device_id, tag);
}

std::int32_t vantu_orvanta_config_gravity_compensation_get(vantu_orvanta_context* context,
                                                           std::uint32_t device_id, std::uint8_t tag) {
    return query<op_code::config_gravity_compensation_get>(context, device_id, tag);
}

std::int32_t vantu_orvanta_config_gravity_compensation_set(
    vantu_orvanta_context* context, std::uint32_t device_id, std::uint8_t tag,
    const vantu_orvanta_config_gravity_compensation* value) {
    return change<op_code::config_gravity_compensation_set>(context, device_id, tag, value);
}

std::int32_t vantu_orvanta_config_torque_scaling_get(vantu_orvanta_context* context, std::uint32_t device_id,
                                                     std::uint8_t tag) {
    return query<op_code::config_torque_scaling_get>(context, device_id, tag);
}

std::int32_t vantu_orvanta_config_torque_scaling_set(vantu_orvanta_context* context, std::uint32_t device_id,
                                                     std::uint8_t tag,
                                                     const vantu_orvanta_config_torque_scaling* value) {
    return change<op_code::config_torque_scaling_set>(context, device_id, tag, value);
}

std::int32_t vantu_orvanta_config_handedness_set(vantu_orvanta_context* context, std::uint32_t device_id,
                                                 std::uint8_t tag, const std::uint8_t* handedness) {
    if (handedness == nullptr || *handedness == vantu_orvanta_handedness_none) {
        return vantu_orvanta_invalid_argument;
    }
    const vantu_orvanta_config_handedness value{*handedness};
    return change<op_code::config_handedness_set>(context, device_id, tag, &value);
}
