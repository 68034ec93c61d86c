// The way of an event to the handler that waits for it, or to its callback.
#include "client_implementation.hpp"
#include "vantu/orvanta/common/platform.hpp"
#include "vantu/orvanta/communication/bodies.hpp"

#include <cstring>
#include <new>
#include <type_traits>

namespace vantu::orvanta {
namespace {

using communication::proto::device_description;

template <typename Record> const Record& record_of(const vantu_orvanta_event& event) {
    // NOLINTNEXTLINE(misc-redundant-expression): not for each record
    static_assert(alignof(Record) == 1 && sizeof(Record) <= sizeof(event.payload));
    return *std::launder(reinterpret_cast<const Record*>(event.payload));
}

template <typename... Parameters, typename... Arguments>
void call(const std::function<void(Parameters...)>& callback, Arguments&&... arguments) {
    if (callback) {
        callback(std::forward<Arguments>(arguments)...);
    }
}

template <typename Record>
void call_with_record(const client::record_callback<Record>& callback, client& owner,
                      const vantu_orvanta_event& event) {
    call(callback, owner, event.device_id, record_of<Record>(event));
}

outcome outcome_of(std::uint32_t event_type) {
    switch (event_type) {
    case vantu_orvanta_event_ack:
        return outcome::acknowledged;
    case vantu_orvanta_event_error:
        return outcome::failed;
    default:
        return outcome::replied;
    }
}

const vantu_orvanta_error* error_of(outcome result, const vantu_orvanta_event& event) {
    const bool has_error = result == outcome::failed || result == outcome::timed_out;
    return has_error ? &record_of<vantu_orvanta_error>(event) : nullptr;
}

void complete(client& owner, const reply_handler<void>& handler, const vantu_orvanta_event& event,
              outcome result) {
    call(handler, owner, reply<void>{result, event.device_id, error_of(result, event)});
}

template <typename Record>
void complete(client& owner, const reply_handler<Record>& handler, const vantu_orvanta_event& event,
              outcome result) {
    call(handler, owner,
         reply<Record>{result, event.device_id,
                       result == outcome::replied ? &record_of<Record>(event) : nullptr,
                       error_of(result, event)});
}

// Calls a handler that was taken out; false when there is none.
bool complete(client& owner, const any_reply_handler& waiting, const vantu_orvanta_event& event,
              outcome result) {
    return std::visit(
        [&](const auto& handler) {
            if constexpr (std::is_same_v<std::decay_t<decltype(handler)>, std::monostate>) {
                return false;
            } else {
                complete(owner, handler, event, result);
                return true;
            }
        },
        waiting);
}

// Calls the handler that waits for an event; false when there is none, as for every event that is no answer.
bool complete_request(client& owner, pending_requests& pending, const vantu_orvanta_event& event) {
    return event.tag != 0 &&
           complete(owner, pending.take(event.event_type, event.tag), event, outcome_of(event.event_type));
}

void call_on_device(const client::record_callback<vantu_orvanta_device>& callback, client& owner,
                    const vantu_orvanta_event& event) {
    vantu_orvanta_device device{};
    constexpr std::size_t description_offset = offsetof(vantu_orvanta_device, device_type);
    std::memcpy(reinterpret_cast<std::byte*>(&device) + description_offset, event.payload,
                sizeof(device_description));
    call(callback, owner, event.device_id, device);
}

// The event that ends a request without one of the service.
vantu_orvanta_event error_event(std::int32_t code) {
    vantu_orvanta_event event{};
    event.event_type = vantu_orvanta_event_error;
    const vantu_orvanta_error error{static_cast<std::uint32_t>(code)};
    std::memcpy(event.payload, &error, sizeof(error));
    return event;
}

// An event's type; none also for a number without a name.
vantu_orvanta_event_type named_type(const vantu_orvanta_event& event) {
    return event.event_type > vantu_orvanta_event_error
               ? vantu_orvanta_event_none
               : static_cast<vantu_orvanta_event_type>(event.event_type);
}

} // namespace

bool client::dispatch(const vantu_orvanta_event& event) {
    config& callbacks = self_->callbacks;
    const auto deliver = [&](const auto& callback) {
        if (complete_request(*this, self_->pending, event)) {
            return;
        }
        if constexpr (std::is_same_v<std::decay_t<decltype(callback)>, device_callback>) {
            call(callback, *this, event.device_id);
        } else {
            call_with_record(callback, *this, event);
        }
    };
    switch (named_type(event)) {
    case vantu_orvanta_event_none:
        break;
    case vantu_orvanta_event_disconnected:
        fail_requests(vantu_orvanta_disconnected_from_service);
        call(callbacks.on_disconnected, *this);
        break;
    case vantu_orvanta_event_device_added:
        call_on_device(callbacks.on_device, *this, event);
        break;
    case vantu_orvanta_event_device_removed:
        deliver(callbacks.on_device_removed);
        break;
    case vantu_orvanta_event_orvanta3_info:
        deliver(callbacks.on_orvanta3_info);
        break;
    case vantu_orvanta_event_palmetron_info:
        deliver(callbacks.on_palmetron_info);
        break;
    case vantu_orvanta_event_cursor_state:
        deliver(callbacks.on_cursor_state);
        break;
    case vantu_orvanta_event_cursor_state_b:
        deliver(callbacks.on_cursor_state_b);
        break;
    case vantu_orvanta_event_palmetron_state:
        deliver(callbacks.on_palmetron_state);
        break;
    case vantu_orvanta_event_service_stream_a:
        call(callbacks.on_service_stream_a, *this, record_of<vantu_orvanta_service_stream_a>(event));
        break;
    case vantu_orvanta_event_service_stream_b:
        deliver(callbacks.on_service_stream_b);
        break;
    case vantu_orvanta_event_ack:
        deliver(callbacks.on_ack);
        break;
    case vantu_orvanta_event_device_opened:
        deliver(callbacks.on_device_opened);
        break;
    case vantu_orvanta_event_device_closed:
        deliver(callbacks.on_device_closed);
        break;
    case vantu_orvanta_event_device_block:
        deliver(callbacks.on_device_block);
        break;
    case vantu_orvanta_event_orientation:
        deliver(callbacks.on_orientation);
        break;
    case vantu_orvanta_event_config_save:
        deliver(callbacks.on_config_save);
        break;
    case vantu_orvanta_event_config_gravity_compensation:
        deliver(callbacks.on_config_gravity_compensation);
        break;
    case vantu_orvanta_event_config_torque_scaling:
        deliver(callbacks.on_config_torque_scaling);
        break;
    case vantu_orvanta_event_config_handedness:
        deliver(callbacks.on_config_handedness);
        break;
    case vantu_orvanta_event_status_motor_current:
        deliver(callbacks.on_status_motor_current);
        break;
    case vantu_orvanta_event_status_power_supply:
        deliver(callbacks.on_status_power_supply);
        break;
    case vantu_orvanta_event_table_block_128:
        deliver(callbacks.on_table_block_128);
        break;
    case vantu_orvanta_event_table_block_301:
        deliver(callbacks.on_table_block_301);
        break;
    case vantu_orvanta_event_error:
        deliver(callbacks.on_error);
        break;
    }
    if (self_->pending.no_deadline_before_ns() != latest_ns) {
        expire_requests();
    }
    return event.event_type != vantu_orvanta_event_none;
}

void client::fail_requests(std::int32_t code) {
    const vantu_orvanta_event event = error_event(code);
    const std::uint64_t newest = self_->pending.newest();
    for (unsigned tag = 1; tag <= pending_requests::tag_count; ++tag) {
        complete(*this, self_->pending.take_entered_until(newest, static_cast<std::uint8_t>(tag)), event,
                 outcome::failed);
    }
}

void client::expire_requests() {
    pending_requests& pending = self_->pending;
    const std::int64_t due_ns = pending.no_deadline_before_ns();
    if (due_ns == latest_ns) {
        return;
    }
    const std::int64_t now_ns = platform::steady_now_ns();
    if (now_ns < due_ns) {
        return;
    }
    const vantu_orvanta_event event = error_event(vantu_orvanta_timed_out);
    const std::uint64_t newest = pending.newest();
    while (complete(*this, pending.take_expired(now_ns, newest), event, outcome::timed_out)) {
    }
}

void client::dispatch_event(void* user, const vantu_orvanta_event* event) {
    static_cast<client*>(user)->dispatch(*event);
}

} // namespace vantu::orvanta
