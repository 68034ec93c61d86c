// The client library and a simulation that runs one of the scenarios that are installed, on real sockets in
// one process. The simulation's time is moved by hand, in steps of a millisecond.
#pragma once

#include "simulator/control/scenario_runner.hpp"
#include "simulator/library/prepared_settings.hpp"
#include "simulator/sockets/server.hpp"
#include "support/log_capture.hpp"
#include "vantu/orvanta/client.hpp"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvanta_tests {

using library_client = vantu::orvanta::client; // the simulator has a record of that name
using gravity = vantu_orvanta_config_gravity_compensation;

struct compensation {
    bool on;
    float factor;
    bool operator==(const compensation&) const = default;
};

// The outcome of a request with a handler: the time it took, and the answer or the code of the refusal.
struct handled {
    std::int64_t after_ms;
    std::uint32_t refusal; // 0: it was answered
    compensation answer;   // off and 0 where the request is not about that
};

class scenario_fixture {
  public:
    // By the file's name without its ending.
    explicit scenario_fixture(const std::string& name);
    ~scenario_fixture();
    scenario_fixture(const scenario_fixture&) = delete;
    scenario_fixture& operator=(const scenario_fixture&) = delete;

    // Connects a new client and returns the code.
    [[nodiscard]] std::int32_t connect();
    [[nodiscard]] std::int32_t connect(std::uint64_t timeout_ns);
    // Destroys the client, goodbye included.
    void leave();

    // Connects a client that is accepted, opens the device and waits for the answer.
    void enter(unsigned device_id);

    // Lets so much time pass, and the client take what comes.
    void pass(std::int64_t milliseconds);
    // Lets time pass until it is so; fails the test after a minute of the simulation.
    void pass_until(const std::function<bool()>& is_so);

    // Asks and waits for what comes of it.
    [[nodiscard]] handled open(unsigned device_id);
    [[nodiscard]] handled ask_gravity(unsigned device_id);
    [[nodiscard]] handled set_gravity(unsigned device_id, const compensation& value);

    // The codes that vantu_orvanta_device_ids returns for a room of so many, and the number of ids.
    struct listing {
        std::int32_t code;
        std::size_t count;
    };
    [[nodiscard]] listing list(std::size_t room);

    [[nodiscard]] library_client& client() { return *client_; }
    [[nodiscard]] std::int64_t now_ms() const;

    // The arguments of the client's callbacks, the streams' aside.
    std::vector<std::string> notes;
    std::vector<compensation> unasked; // answers about gravity compensation that no handler waited for
    std::vector<std::int32_t> codes;   // the polls' codes other than 0
    std::uint64_t cursor_states{0};
    std::uint64_t grip_states{0};
    vantu_orvanta_cursor_state cursor{}; // the latest
    log_capture log;

    // Given each new context before it connects, and each event of the polls.
    std::function<void(vantu_orvanta_context*)> prepare;
    std::function<void(const vantu_orvanta_event&)> on_event;

    vantu::orvanta::simulator::simulation simulated;

  private:
    explicit scenario_fixture(vantu::orvanta::simulator::prepared_settings prepared);
    [[nodiscard]] library_client::config callbacks();
    void while_serving(const std::function<void()>& blocking);
    void poll();
    [[nodiscard]] handled outcome_of(std::int64_t since_ns, const std::optional<handled>& result);

    std::int64_t now_ns_{0};
    vantu::orvanta::simulator::scenario_runner runner_;
    vantu::orvanta::simulator::listeners sockets_{"0"};
    vantu::orvanta::simulator::server server_;
    std::unique_ptr<library_client> client_;
    bool connected_{false};
};

} // namespace orvanta_tests
