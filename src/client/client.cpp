#include "vantu/orvanta/client.hpp"

#include "client_implementation.hpp"
#include "vantu/orvanta/common/version.hpp"

#include <new>

namespace vantu::orvanta {

namespace op_code = communication::op_code;

client::implementation::implementation(config callbacks_wanted)
    : callbacks(std::move(callbacks_wanted)), context(vantu_orvanta_context_create()) {
    if (context == nullptr) {
        throw std::bad_alloc();
    }
}

client::client(config callbacks) : self_(std::make_unique<implementation>(std::move(callbacks))) {
    self_->when_idle = {[](void* user) { static_cast<client*>(user)->expire_requests(); }, this};
    set_idle_task(*context(), &self_->when_idle);
}

client::~client() = default;

vantu_orvanta_context* client::context() const noexcept {
    return self_->context.get();
}

bool client::cancel(const request_ticket& ticket) {
    return self_->pending.withdraw(ticket);
}

std::int64_t client::next_deadline_ns() const {
    return self_->pending.next_deadline_ns();
}

std::int32_t client::device_open(unsigned device_id, std::uint16_t value, reply_handler<void> handler,
                                 const request_options& options) {
    return self_->request<op_code::device_open>(std::move(handler), options, [&](std::uint8_t tag) {
        return vantu_orvanta_device_open(context(), device_id, tag, value);
    });
}

std::int32_t client::device_close(unsigned device_id, reply_handler<void> handler,
                                  const request_options& options) {
    return self_->request<op_code::device_close>(std::move(handler), options, [&](std::uint8_t tag) {
        return vantu_orvanta_device_close(context(), device_id, tag);
    });
}

std::int32_t client::orientation_get(unsigned device_id, reply_handler<vantu_orvanta_orientation> handler,
                                     const request_options& options) {
    return self_->request<op_code::orientation_get>(std::move(handler), options, [&](std::uint8_t tag) {
        return vantu_orvanta_orientation_get(context(), device_id, tag);
    });
}

std::int32_t client::config_save(unsigned device_id, reply_handler<vantu_orvanta_config_save> handler,
                                 const request_options& options) {
    return self_->request<op_code::config_save>(std::move(handler), options, [&](std::uint8_t tag) {
        return vantu_orvanta_config_save_request(context(), device_id, tag);
    });
}

std::int32_t client::config_gravity_compensation_get(
    unsigned device_id, reply_handler<vantu_orvanta_config_gravity_compensation> handler,
    const request_options& options) {
    return self_->request<op_code::config_gravity_compensation_get>(
        std::move(handler), options, [&](std::uint8_t tag) {
            return vantu_orvanta_config_gravity_compensation_get(context(), device_id, tag);
        });
}

std::int32_t client::config_gravity_compensation_set(
    unsigned device_id, const vantu_orvanta_config_gravity_compensation& value,
    reply_handler<vantu_orvanta_config_gravity_compensation> handler, const request_options& options) {
    return self_->request<op_code::config_gravity_compensation_set>(
        std::move(handler), options, [&](std::uint8_t tag) {
            return vantu_orvanta_config_gravity_compensation_set(context(), device_id, tag, &value);
        });
}

std::int32_t client::config_torque_scaling_get(unsigned device_id,
                                               reply_handler<vantu_orvanta_config_torque_scaling> handler,
                                               const request_options& options) {
    return self_->request<op_code::config_torque_scaling_get>(
        std::move(handler), options,
        [&](std::uint8_t tag) { return vantu_orvanta_config_torque_scaling_get(context(), device_id, tag); });
}

std::int32_t client::config_torque_scaling_set(unsigned device_id,
                                               const vantu_orvanta_config_torque_scaling& value,
                                               reply_handler<vantu_orvanta_config_torque_scaling> handler,
                                               const request_options& options) {
    return self_->request<op_code::config_torque_scaling_set>(
        std::move(handler), options, [&](std::uint8_t tag) {
            return vantu_orvanta_config_torque_scaling_set(context(), device_id, tag, &value);
        });
}

std::int32_t client::config_handedness_set(unsigned device_id, std::uint8_t handedness,
                                           reply_handler<vantu_orvanta_config_handedness> handler,
                                           const request_options& options) {
    return self_->request<op_code::config_handedness_set>(std::move(handler), options, [&](std::uint8_t tag) {
        return vantu_orvanta_config_handedness_set(context(), device_id, tag, &handedness);
    });
}

} // namespace vantu::orvanta
