#include "flat_api_stand_in.hpp"

#include "runtime/idle_task.hpp"
#include "vantu/orvanta/common/platform.hpp"
#include "vantu/orvanta/orvanta.h"

struct vantu_orvanta_context {
    int nothing{0};
};

using orvanta_fuzz::on_request;

namespace vantu::orvanta {

void set_idle_task(vantu_orvanta_context& /*context*/, const idle_task* /*task*/) {}

std::int64_t platform::steady_now_ns() noexcept {
    return orvanta_fuzz::now_ns;
}

} // namespace vantu::orvanta

vantu_orvanta_context* vantu_orvanta_context_create() {
    return new vantu_orvanta_context;
}

void vantu_orvanta_disconnect(vantu_orvanta_context* context) {
    delete context;
}

const char* vantu_orvanta_error_message(std::int32_t /*code*/) {
    return "";
}

std::int32_t vantu_orvanta_device_open(vantu_orvanta_context* /*context*/, std::uint32_t /*device_id*/,
                                       std::uint8_t tag, std::uint16_t /*value*/) {
    return on_request(tag);
}

std::int32_t vantu_orvanta_device_close(vantu_orvanta_context* /*context*/, std::uint32_t /*device_id*/,
                                        std::uint8_t tag) {
    return on_request(tag);
}

std::int32_t vantu_orvanta_orientation_get(vantu_orvanta_context* /*context*/, std::uint32_t /*device_id*/,
                                           std::uint8_t tag) {
    return on_request(tag);
}

std::int32_t vantu_orvanta_config_save_request(vantu_orvanta_context* /*context*/,
                                               std::uint32_t /*device_id*/, std::uint8_t tag) {
    return on_request(tag);
}

std::int32_t vantu_orvanta_config_gravity_compensation_get(vantu_orvanta_context* /*context*/,
                                                           std::uint32_t /*device_id*/, std::uint8_t tag) {
    return on_request(tag);
}

std::int32_t vantu_orvanta_config_gravity_compensation_set(
    vantu_orvanta_context* /*context*/, std::uint32_t /*device_id*/, std::uint8_t tag,
    const vantu_orvanta_config_gravity_compensation* /*value*/) {
    return on_request(tag);
}

std::int32_t vantu_orvanta_config_torque_scaling_get(vantu_orvanta_context* /*context*/,
                                                     std::uint32_t /*device_id*/, std::uint8_t tag) {
    return on_request(tag);
}

std::int32_t vantu_orvanta_config_torque_scaling_set(vantu_orvanta_context* /*context*/,
                                                     std::uint32_t /*device_id*/, std::uint8_t tag,
                                                     const vantu_orvanta_config_torque_scaling* /*value*/) {
    return on_request(tag);
}

std::int32_t vantu_orvanta_config_handedness_set(vantu_orvanta_context* /*context*/,
                                                 std::uint32_t /*device_id*/, std::uint8_t tag,
                                                 const std::uint8_t* /*handedness*/) {
    return on_request(tag);
}
