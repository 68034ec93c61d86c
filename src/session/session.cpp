// Class session: the two forms of each request, over one way of sending them.
#include "vantu/orvanta/session.hpp"

#include "session_implementation.hpp"
#include "values.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"
#include "vantu/orvanta/common/platform.hpp"
#include "vantu/orvanta/orvanta.h"

#include <algorithm>
#include <string>
#include <type_traits>
#include <utility>

namespace vantu::orvanta {
namespace {

// The outcome for the caller of a reply's record.
template <typename Value, typename Record>
result<Value> outcome_of(const reply<Record>& answer, const std::string& what) {
    if (answer.result == outcome::failed || answer.result == outcome::timed_out) {
        return failure_of(static_cast<std::int32_t>(answer.error->status), what);
    }
    if constexpr (std::is_void_v<Value>) {
        return {};
    } else {
        if (answer.result == outcome::acknowledged) {
            return failure{error_code::protocol_parse_failed,
                           what + ": the service took the request and sent no value"};
        }
        return value_of(*answer.record);
    }
}

// The time of a request: at least 0.
std::chrono::nanoseconds time_of(const session::timeout& wanted, std::chrono::nanoseconds usual) {
    return std::max(wanted.value_or(usual), std::chrono::nanoseconds(0));
}

std::string text_of(const char* request, std::uint32_t device_id) {
    return std::string(request) + " of device " + std::to_string(device_id);
}

} // namespace

// Sends a request by one of the client's methods, whose reply has a Record, and lets the handler have its
// Value.
template <typename Value, typename Record, typename Method, typename... Arguments>
void session::implementation::request(const char* name, std::uint32_t device_id, handler<Value> done,
                                      const timeout& time, Method method, const Arguments&... arguments) {
    const log_scope scope(log_);
    const auto waiting =
        std::make_shared<call_with_handler<Value>>(text_of(name, device_id), std::move(done));
    const entered place = enter(waiting);
    if (place.by == nullptr) {
        return;
    }
    const auto answered = [this, waiting, number = place.number](client&, const reply<Record>& answer) {
        if (take(number)) {
            waiting->finish(owner_, outcome_of<Value>(answer, waiting->what));
        }
    };
    const std::chrono::nanoseconds wait = time_of(time, options_.request_timeout);
    const std::int64_t deadline_ns =
        time_after(platform::steady_now_ns(), static_cast<std::uint64_t>(wait.count()));
    const std::int32_t code = (place.by.get()->*method)(device_id, arguments..., answered, {wait, nullptr});
    if (code != vantu_orvanta_success) {
        fail_later(place.number, failure_of(code, waiting->what));
        return;
    }
    consider(deadline_ns);
}

// The waiting form of a request: start is given the handler.
template <typename Value, typename Start>
result<Value> session::implementation::wait_for(const char* name, std::uint32_t device_id,
                                                const timeout& time, Start start) const {
    if (is_own_thread()) {
        return called_from_a_callback(text_of(name, device_id));
    }
    if (!is_connected()) {
        return failure_of(vantu_orvanta_disconnected_from_service, text_of(name, device_id));
    }
    const auto box = std::make_shared<outcome_box<Value>>();
    start([box](session&, const result<Value>& outcome) { box->put(outcome); });
    // The thread ends it in time as a rule; a callback may keep it from that.
    if (auto outcome = box->wait(time_of(time, options_.request_timeout))) {
        return *std::move(outcome);
    }
    return failure_of(vantu_orvanta_timed_out, text_of(name, device_id));
}

session::session(options wanted) : self_(std::make_unique<implementation>(*this, std::move(wanted))) {
    self_->start();
}

session::~session() {
    self_->stop();
}

bool session::is_connected() const {
    return self_->is_connected();
}

std::vector<device> session::devices() const {
    return self_->devices();
}

session::statistics session::count() const {
    return self_->count();
}

result<device> session::wait_for_device(std::chrono::nanoseconds time,
                                        const std::function<bool(const device&)>& wanted) {
    return self_->wait_for_device(time, wanted);
}

void session::open(std::uint32_t device_id, handler<void> done, timeout time) {
    auto kept = [device_id, number = self_->opening(device_id),
                 done = std::move(done)](session& same, const result<void>& outcome) {
        if (outcome) {
            same.self_->opened(device_id, number);
        }
        if (done) {
            done(same, outcome);
        }
    };
    self_->request<void, void>("open", device_id, std::move(kept), time, &client::device_open,
                               std::uint16_t{0});
}

result<void> session::open(std::uint32_t device_id, timeout time) {
    return self_->wait_for<void>("open", device_id, time,
                                 [&](handler<void> done) { open(device_id, std::move(done), time); });
}

void session::close(std::uint32_t device_id, handler<void> done, timeout time) {
    self_->closing(device_id);
    self_->request<void, void>("close", device_id, std::move(done), time, &client::device_close);
}

result<void> session::close(std::uint32_t device_id, timeout time) {
    return self_->wait_for<void>("close", device_id, time,
                                 [&](handler<void> done) { close(device_id, std::move(done), time); });
}

void session::get_orientation(std::uint32_t device_id, handler<orientation> done, timeout time) {
    self_->request<orientation, vantu_orvanta_orientation>("get_orientation", device_id, std::move(done),
                                                           time, &client::orientation_get);
}

result<orientation> session::get_orientation(std::uint32_t device_id, timeout time) {
    return self_->wait_for<orientation>("get_orientation", device_id, time, [&](handler<orientation> done) {
        get_orientation(device_id, std::move(done), time);
    });
}

void session::get_gravity_compensation(std::uint32_t device_id, handler<gravity_compensation> done,
                                       timeout time) {
    self_->request<gravity_compensation, vantu_orvanta_config_gravity_compensation>(
        "get_gravity_compensation", device_id, std::move(done), time,
        &client::config_gravity_compensation_get);
}

result<gravity_compensation> session::get_gravity_compensation(std::uint32_t device_id, timeout time) {
    return self_->wait_for<gravity_compensation>(
        "get_gravity_compensation", device_id, time, [&](handler<gravity_compensation> done) {
            get_gravity_compensation(device_id, std::move(done), time);
        });
}

void session::set_gravity_compensation(std::uint32_t device_id, const gravity_compensation& value,
                                       handler<gravity_compensation> done, timeout time) {
    self_->request<gravity_compensation, vantu_orvanta_config_gravity_compensation>(
        "set_gravity_compensation", device_id, std::move(done), time,
        &client::config_gravity_compensation_set, record_of(value));
}

result<gravity_compensation> session::set_gravity_compensation(std::uint32_t device_id,
                                                               const gravity_compensation& value,
                                                               timeout time) {
    return self_->wait_for<gravity_compensation>(
        "set_gravity_compensation", device_id, time, [&](handler<gravity_compensation> done) {
            set_gravity_compensation(device_id, value, std::move(done), time);
        });
}

// Changes what the service last confirmed, or what it says when that is not known, and sets the whole.
template <typename Change>
void session::implementation::change_gravity_compensation(const char* name, std::uint32_t device_id,
                                                          handler<gravity_compensation> done,
                                                          const timeout& time, Change change) {
    using record = vantu_orvanta_config_gravity_compensation;
    const std::chrono::nanoseconds wait = time_of(time, options_.request_timeout);
    const auto set = [this, name, device_id, change](gravity_compensation value,
                                                     handler<gravity_compensation> then,
                                                     std::chrono::nanoseconds left) {
        change(value);
        request<gravity_compensation, record>(name, device_id, std::move(then), left,
                                              &client::config_gravity_compensation_set, record_of(value));
    };
    if (const std::optional<gravity_compensation> known = confirmed(device_id)) {
        set(*known, std::move(done), wait);
        return;
    }
    const auto asked = std::chrono::steady_clock::now();
    auto set_then = [set, wait, asked, done = std::move(done)](session& same,
                                                               const result<gravity_compensation>& outcome) {
        if (outcome) {
            set(*outcome, done, wait - (std::chrono::steady_clock::now() - asked));
        } else if (done) {
            done(same, outcome);
        }
    };
    request<gravity_compensation, record>(name, device_id, std::move(set_then), wait,
                                          &client::config_gravity_compensation_get);
}

void session::set_gravity_compensation_enabled(std::uint32_t device_id, bool enabled,
                                               handler<gravity_compensation> done, timeout time) {
    self_->change_gravity_compensation("set_gravity_compensation_enabled", device_id, std::move(done), time,
                                       [enabled](gravity_compensation& value) { value.enabled = enabled; });
}

result<gravity_compensation> session::set_gravity_compensation_enabled(std::uint32_t device_id, bool enabled,
                                                                       timeout time) {
    return self_->wait_for<gravity_compensation>(
        "set_gravity_compensation_enabled", device_id, time, [&](handler<gravity_compensation> done) {
            set_gravity_compensation_enabled(device_id, enabled, std::move(done), time);
        });
}

void session::set_scaling_factor(std::uint32_t device_id, float factor, handler<gravity_compensation> done,
                                 timeout time) {
    self_->change_gravity_compensation(
        "set_scaling_factor", device_id, std::move(done), time,
        [factor](gravity_compensation& value) { value.scaling_factor = factor; });
}

result<gravity_compensation> session::set_scaling_factor(std::uint32_t device_id, float factor,
                                                         timeout time) {
    return self_->wait_for<gravity_compensation>(
        "set_scaling_factor", device_id, time, [&](handler<gravity_compensation> done) {
            set_scaling_factor(device_id, factor, std::move(done), time);
        });
}

void session::get_torque_scaling(std::uint32_t device_id, handler<torque_scaling> done, timeout time) {
    self_->request<torque_scaling, vantu_orvanta_config_torque_scaling>(
        "get_torque_scaling", device_id, std::move(done), time, &client::config_torque_scaling_get);
}

result<torque_scaling> session::get_torque_scaling(std::uint32_t device_id, timeout time) {
    return self_->wait_for<torque_scaling>(
        "get_torque_scaling", device_id, time,
        [&](handler<torque_scaling> done) { get_torque_scaling(device_id, std::move(done), time); });
}

void session::set_torque_scaling(std::uint32_t device_id, bool enabled, handler<torque_scaling> done,
                                 timeout time) {
    self_->request<torque_scaling, vantu_orvanta_config_torque_scaling>(
        "set_torque_scaling", device_id, std::move(done), time, &client::config_torque_scaling_set,
        record_of(torque_scaling{enabled}));
}

result<torque_scaling> session::set_torque_scaling(std::uint32_t device_id, bool enabled, timeout time) {
    return self_->wait_for<torque_scaling>(
        "set_torque_scaling", device_id, time,
        [&](handler<torque_scaling> done) { set_torque_scaling(device_id, enabled, std::move(done), time); });
}

void session::set_handedness(std::uint32_t device_id, handedness hand, handler<handedness> done,
                             timeout time) {
    self_->request<handedness, vantu_orvanta_config_handedness>("set_handedness", device_id, std::move(done),
                                                                time, &client::config_handedness_set,
                                                                static_cast<std::uint8_t>(hand));
}

result<handedness> session::set_handedness(std::uint32_t device_id, handedness hand, timeout time) {
    return self_->wait_for<handedness>("set_handedness", device_id, time, [&](handler<handedness> done) {
        set_handedness(device_id, hand, std::move(done), time);
    });
}

void session::save(std::uint32_t device_id, handler<saved_configuration> done, timeout time) {
    self_->request<saved_configuration, vantu_orvanta_config_save>("save", device_id, std::move(done), time,
                                                                   &client::config_save);
}

result<saved_configuration> session::save(std::uint32_t device_id, timeout time) {
    return self_->wait_for<saved_configuration>(
        "save", device_id, time,
        [&](handler<saved_configuration> done) { save(device_id, std::move(done), time); });
}

} // namespace vantu::orvanta
