// A program of a user's, as far as a test needs one: a client that is connected to a simulator and polled
// by hand.
#pragma once

#include "vantu/orvanta/client.hpp"
#include "vantu/orvanta/simulator.hpp"

#include <cstdint>
#include <functional>
#include <map>

namespace orvanta_tests {

// A simulator with a clock that is moved by hand.
[[nodiscard]] vantu::orvanta::service_simulator::settings by_hand();

// Waits for a condition while doing something over and over; fails the test after 30 s.
void wait_until(const std::function<bool()>& condition, const std::function<void()>& meanwhile = {});

class simulated_client {
  public:
    // Not connected yet.
    explicit simulated_client(vantu::orvanta::service_simulator& service);
    ~simulated_client();
    simulated_client(const simulated_client&) = delete;
    simulated_client& operator=(const simulated_client&) = delete;

    // Connects, the simulator being served meanwhile where it has a manual clock. The client's code.
    [[nodiscard]] std::int32_t connect(std::uint64_t keep_alive_ns = 5'000'000'000,
                                       std::uint64_t reply_timeout_ns = 10'000'000'000);

    // Polls until nothing is there, serving the simulator before each poll; counts the events by their types.
    void poll();

    // Polls until that many events of a type have come since the last call of forget.
    void poll_until(std::uint32_t type, std::size_t count = 1);

    void forget() { counts.clear(); }

    // Opens the device and waits for the answer.
    void open(std::uint32_t device_id);

    [[nodiscard]] vantu_orvanta_context* context() { return client_.context(); }

    std::map<std::uint32_t, std::size_t> counts;
    vantu_orvanta_event last{}; // that was no state
    std::int32_t poll_code{0};  // the last poll's

  private:
    void serve();

    vantu::orvanta::service_simulator& service_;
    bool served_by_hand_{true};
    vantu::orvanta::client client_;
};

} // namespace orvanta_tests
