#include "watch.hpp"

#include <array>
#include <chrono>
#include <utility>

namespace orvanta = vantu::orvanta;

namespace {

constexpr std::uint64_t keep_alive_ns = 5'000'000'000;
constexpr std::uint64_t reply_timeout_ns = 100'000'000;
// After such a silence the device was not opened, or is gone, or the service has forgotten this client:
// asking tells.
constexpr std::int64_t longest_silence_ns = 100'000'000;
// The answer of a service that was started anew and has forgotten this client.
constexpr std::uint32_t client_is_not_connected = 176;

std::int64_t now_ns() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
}

} // namespace

watch::watch(std::string service_port) : service_port_(std::move(service_port)) {}

void watch::turn() {
    if (!client_) {
        connect();
        return;
    }
    const std::int32_t code = take_events();
    if (lost_) {
        client_->fail_requests(code); // no answer can come any more
        client_.reset();
        device_id_ = 0;
        return;
    }
    find_device();
    if (sees_a_device() && now_ns() - last_word_ns_ > longest_silence_ns) {
        last_word_ns_ = now_ns();
        // The request or its answer may get lost: it counts as lost by now, and is repeated.
        client_->fail_requests(vantu_orvanta_timed_out);
        open_device();
    }
}

void watch::open_device() {
    const auto count_answer = [this](orvanta::client&, const orvanta::reply<void>& answer) {
        --waiting_;
        lost_ = lost_ || (answer.result == orvanta::outcome::failed &&
                          answer.error->status == client_is_not_connected);
    };
    if (client_->device_open(device_id_, 0, count_answer) == vantu_orvanta_success) {
        ++waiting_;
    }
}

void watch::connect() {
    orvanta::client::config callbacks;
    callbacks.on_cursor_state = [this](orvanta::client&, unsigned, const vantu_orvanta_cursor_state& state) {
        last_state_ = state;
        last_word_ns_ = now_ns();
        ++states_;
    };
    callbacks.on_device_removed = [this](orvanta::client&, unsigned id) {
        device_id_ = id == device_id_ ? 0 : device_id_;
    };
    callbacks.on_error = [this](orvanta::client&, unsigned, const vantu_orvanta_error& error) {
        lost_ =
            lost_ || error.status == client_is_not_connected; // in answer to a request that counts as lost
    };
    callbacks.on_disconnected = [this](orvanta::client&) { lost_ = true; };
    auto fresh = std::make_unique<orvanta::client>(callbacks);
    if (vantu_orvanta_connect_ports(fresh->context(), "0", service_port_.c_str(), "watch", 0, 0,
                                    keep_alive_ns, reply_timeout_ns) == vantu_orvanta_success) {
        client_ = std::move(fresh);
        lost_ = false;
        last_word_ns_ = 0;
        ++connections_;
    }
}

void watch::find_device() {
    if (sees_a_device()) {
        return;
    }
    std::array<std::uint32_t, 64> ids{};
    std::size_t count = ids.size();
    const std::int32_t code = vantu_orvanta_device_ids(client_->context(), ids.data(), &count);
    if (code != vantu_orvanta_success && code != vantu_orvanta_buffer_full_or_empty) {
        return;
    }
    for (std::size_t i = 0; i < count && !sees_a_device(); ++i) {
        vantu_orvanta_device device{};
        if (vantu_orvanta_device_info(client_->context(), ids[i], &device) == vantu_orvanta_success &&
            device.device_type == vantu_orvanta_device_type_orvanta3) {
            device_id_ = ids[i];
            last_word_ns_ = 0;
        }
    }
}

std::int32_t watch::take_events() {
    vantu_orvanta_event event{};
    do {
        const std::int32_t code = vantu_orvanta_poll(client_->context(), &event);
        if (code != vantu_orvanta_success) {
            // After bytes that make no sense polling goes on; a service that is gone is another matter.
            lost_ = lost_ || code == vantu_orvanta_disconnected_from_service ||
                    code == vantu_orvanta_invalid_connection_state;
            return code;
        }
        client_->dispatch(event);
    } while (event.event_type != vantu_orvanta_event_none);
    return vantu_orvanta_disconnected_from_service;
}
