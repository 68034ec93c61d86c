// The client library and a simulation with faults, on real sockets in one process, each moved by hand: a
// datagram that was sent is there, so nobody waits for time to pass but the calls that block.
#pragma once

#include "faults/matrix.hpp"
#include "simulator/simulation/simulation.hpp"
#include "simulator/sockets/server.hpp"
#include "support/log_capture.hpp"
#include "vantu/orvanta/client.hpp"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace orvanta_tests {

// No keep-alive falls into a test: their exchange is a subject of its own.
inline constexpr std::uint64_t keep_alive_ns = 3'600'000'000'000;
// For what must come: nobody waits this long unless something is broken.
inline constexpr std::uint64_t patience_ns = 30'000'000'000;

class fault_fixture {
  public:
    // One Orvanta3 with the id 1, which streams its states at the rate.
    explicit fault_fixture(double rate_hz = 0);
    ~fault_fixture();
    fault_fixture(const fault_fixture&) = delete;
    fault_fixture& operator=(const fault_fixture&) = delete;

    // Does what a verb says; fails the test when the verb is wrong.
    void tell(std::string_view verb);

    // Connects the client, which makes a new one where it was gone, and returns the code. The time-out is
    // real time; meanwhile the simulation's goes on.
    std::int32_t connect(std::uint64_t timeout_ns);

    // Connects, opens the device and takes what that brings.
    void enter();

    // Destroys the client, goodbye included, and returns how long that took.
    std::int64_t leave();

    // Asks for the gravity compensation with a handler that waits for the answer.
    void ask();

    // Moves the simulation in steps and takes what comes after each.
    void pass(std::int64_t step_ns, int steps);

    // Polls until nothing comes any more.
    void take();

    // Codes and events since the last time, "a; b"; "nothing" for none.
    [[nodiscard]] std::string seen();
    // Log lines since the last time, "a / b"; "-" for none.
    [[nodiscard]] std::string logged();

    // The outcome of a call once the faults are healed: opening the device, or connecting for a client that
    // is not connected.
    [[nodiscard]] std::string next();

    vantu::orvanta::simulator::simulation simulated;
    std::vector<std::string> notes; // codes and events

  private:
    void while_serving(const std::function<void()>& blocking);
    void note(const vantu_orvanta_event& event);
    [[nodiscard]] std::string text_of_state(const vantu_orvanta_event& event) const;

    std::int64_t now_ns_{0};
    std::int64_t first_state_ns_{0};
    int idle_polls_{50}; // so many without an event mean that none is left
    vantu::orvanta::simulator::listeners sockets_{"0"};
    vantu::orvanta::simulator::server server_;
    log_capture log_;
    std::unique_ptr<vantu::orvanta::client> client_;
    bool connected_{false};
    std::string handled_; // the handler's outcomes
};

} // namespace orvanta_tests
