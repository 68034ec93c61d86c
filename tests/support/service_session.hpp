// A context that is connected to a scripted service, and how tests poll it.
#pragma once

#include "support/scripted_service.hpp"
#include "support/service_operations.hpp"
#include "vantu/orvanta/orvanta.h"

#include <cstdint>

namespace orvanta_tests {

inline constexpr std::uint64_t keep_alive_ns = 5'000'000'000;
inline constexpr std::uint64_t patient_timeout_ns = 30'000'000'000;

// Datagrams of every session, written out by hand.
[[nodiscard]] bytes connect_request();  // client name "test client", values 0 and 0, keep_alive_ns
[[nodiscard]] bytes acceptance();       // client id 0x1122334455667788
[[nodiscard]] bytes goodbye();          // from the client
[[nodiscard]] bytes goodbye_received(); // from the service

// The device and the values of most tests, as records and as the bytes that stand for them.
inline constexpr vantu_orvanta_config_gravity_compensation gravity{1, 0.75F};
inline const bytes gravity_bytes{1, 0x00, 0x00, 0x40, 0x3F};
inline constexpr vantu_orvanta_config_torque_scaling torque{1};

// connect_ports from any local port to the service with the values of connect_request.
[[nodiscard]] std::int32_t connect_to(const scripted_service& service, vantu_orvanta_context* context);

// Connected when it is built; says goodbye, and expects to, when it is destroyed while still connected.
class service_session {
  public:
    service_session();
    // Connects a context that somebody else owns, and leaves the goodbye to them.
    explicit service_session(vantu_orvanta_context* context);
    ~service_session();
    service_session(const service_session&) = delete;
    service_session& operator=(const service_session&) = delete;

    // Adds the goodbye to the script, unless there is none to come.
    void expect_goodbye();
    // Disconnects now.
    void end();

    scripted_service service;
    vantu_orvanta_context* context;

  private:
    bool owned_;
};

struct polled {
    std::int32_t code;
    vantu_orvanta_event event;
};

[[nodiscard]] polled poll_once(vantu_orvanta_context* context);
// Polls until something happens: an event or a code. Fails the test when nothing does.
[[nodiscard]] polled poll_until_something(vantu_orvanta_context* context);

// Waits for a condition; fails the test when it does not come about.
template <typename Condition> [[nodiscard]] bool wait_until(Condition condition) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

} // namespace orvanta_tests
