// The session's thread: it takes events while there is a connection, and tries to get one back otherwise.
#include "session_implementation.hpp"
#include "values.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"
#include "vantu/orvanta/common/platform.hpp"
#include "vantu/orvanta/orvanta.h"

#include <algorithm>

namespace vantu::orvanta {
namespace {

// A service that never stops sending leaves time for what else is due.
constexpr int events_at_once = 256;
constexpr int failures_to_give_up = 100;
constexpr auto pause_without_waiting = std::chrono::milliseconds(1);
// Asked for while no device is known: any answer tells that the service is there.
constexpr std::uint32_t any_device_id = 1;

error_code error_of(const vantu_orvanta_event& event) {
    return static_cast<error_code>(record_in<vantu_orvanta_error>(event).status);
}

} // namespace

void session::implementation::run(void* self) noexcept {
    auto& session = *static_cast<implementation*>(self);
    const log_scope scope(session.log_);
    session.thread_id_.store(std::this_thread::get_id());
    session.announce(*session.client_, platform::steady_now_ns()); // before any event: the constructor waits
    while (!session.is_stopping()) {
        session.serve();
    }
    session.fail_entered("the session ended");
    while (session.has_posted()) {
        session.fail_posted();
    }
}

void session::implementation::serve() {
    std::shared_ptr<client> with;
    {
        const std::lock_guard lock(mutex_);
        with = client_;
    }
    if (with == nullptr) {
        wait_for_reconnection();
        return;
    }
    take_events(*with);
    fail_posted();
    with->expire_requests();
    if (is_stopping()) {
        return;
    }
    if (!loss_) {
        const std::int64_t now_ns = platform::steady_now_ns();
        announce(*with, now_ns);
        watch_over(*with, now_ns);
    }
    if (loss_) {
        lose();
        return;
    }
    sleep(*with);
}

void session::implementation::take_events(client& with) {
    for (int taken = 0; taken < events_at_once && !loss_ && !is_stopping(); ++taken) {
        vantu_orvanta_event event;
        const std::int32_t code = vantu_orvanta_poll(with.context(), &event);
        switch (static_cast<error_code>(code)) {
        case error_code::success:
            failures_in_a_row_ = 0;
            if (event.event_type == vantu_orvanta_event_none) {
                return;
            }
            handle_event(with, event, platform::steady_now_ns());
            break;
        case error_code::protocol_parse_failed:
        case error_code::invalid_argument:
        case error_code::no_matching_device:
            rejected_.fetch_add(1, std::memory_order_relaxed);
            break;
        case error_code::disconnected_from_service:
        case error_code::invalid_connection_state:
            note_loss(error_code::disconnected_from_service, "the service's port is closed");
            return;
        default:
            if (++failures_in_a_row_ >= failures_to_give_up) {
                note_loss(static_cast<error_code>(code), "the system refuses to receive");
            }
            return;
        }
    }
}

void session::implementation::handle_event(client& with, const vantu_orvanta_event& event,
                                           std::int64_t now_ns) {
    events_.fetch_add(1, std::memory_order_relaxed);
    liveness_.heard(now_ns);
    if (options_.callbacks.on_event) {
        options_.callbacks.on_event(owner_, event);
    }
    note(with, event, now_ns);
    // Before the handlers that the event fails: they find no connection.
    if (event.event_type == vantu_orvanta_event_disconnected) {
        note_loss(error_code::disconnected_from_service, "the service said goodbye");
    }
    if (event.event_type == vantu_orvanta_event_error) {
        const error_code code = error_of(event);
        if (code == error_code::client_not_connected || code == error_code::unknown_client_id) {
            note_loss(code, "the service does not know this client any more");
        }
    }
    with.dispatch(event);
}

// Takes note of all that an event tells beside the answer to a request.
void session::implementation::note(client& with, const vantu_orvanta_event& event, std::int64_t now_ns) {
    const auto& told = options_.callbacks;
    switch (event.event_type) {
    case vantu_orvanta_event_device_added:
        replace(with, event.device_id);
        arrivals_.listed(event.device_id, now_ns);
        break;
    case vantu_orvanta_event_device_removed:
        remove(event.device_id);
        break;
    case vantu_orvanta_event_orvanta3_info:
    case vantu_orvanta_event_palmetron_info:
        arrivals_.described(event.device_id);
        refresh(with, event.device_id);
        break;
    case vantu_orvanta_event_cursor_state:
    case vantu_orvanta_event_cursor_state_b:
        if (const std::uint64_t number = ++samples_[event.device_id]; told.on_cursor) {
            told.on_cursor(owner_, sample_of(event, number, now_ns));
        }
        break;
    case vantu_orvanta_event_status_motor_current:
        if (told.on_motor_current) {
            told.on_motor_current(owner_, motor_current_of(event));
        }
        break;
    case vantu_orvanta_event_status_power_supply:
        if (told.on_power_supply) {
            told.on_power_supply(owner_, power_supply_of(event));
        }
        break;
    case vantu_orvanta_event_config_gravity_compensation: {
        const std::lock_guard lock(mutex_);
        confirmed_[event.device_id] = value_of(record_in<vantu_orvanta_config_gravity_compensation>(event));
        break;
    }
    default:
        break;
    }
}

void session::implementation::watch_over(client& with, std::int64_t now_ns) {
    switch (liveness_.judge(now_ns)) {
    case liveness::verdict::wait:
        break;
    case liveness::verdict::ask: {
        std::uint32_t id = any_device_id;
        {
            const std::lock_guard lock(mutex_);
            id = arrived_.empty() ? id : arrived_.front().id;
        }
        (void)with.orientation_get(id, {}, {options_.probe_interval, nullptr});
        break;
    }
    case liveness::verdict::lost:
        note_loss(error_code::timed_out, "the service does not answer any more");
        break;
    }
}

void session::implementation::sleep(client& with) {
    const auto wanted_ns = [&] {
        return std::min({with.next_deadline_ns(), arrivals_.due_ns(), liveness_.due_ns()});
    };
    const std::int64_t until_ns = wanted_ns();
    // In one order with consider(): it sees this time, or the second look here sees its deadline.
    sleeps_until_ns_.exchange(until_ns, std::memory_order_acq_rel);
    // The polls have taken back the wakes that came before them.
    if (wanted_ns() < until_ns || is_stopping()) {
        return;
    }
    const std::int64_t left_ns = time_left_ns(platform::steady_now_ns(), until_ns);
    const std::int32_t code = vantu_orvanta_wait(with.context(), static_cast<std::uint64_t>(left_ns));
    if (code == vantu_orvanta_unexpected_error) {
        // The system gives nothing to wait with: looking now and then has to do.
        std::this_thread::sleep_for(pause_without_waiting);
    }
}

} // namespace vantu::orvanta
