// All that a rule knows of the world: the service's address, the clock and how long a service may take.
#pragma once

#include "network/socket.hpp"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace vantu::orvanta::conformance {

// The clock, and sleeping until something waits on the socket or the clock reaches a deadline.
struct pace {
    std::function<std::int64_t()> now_ns;
    std::function<void(socket_handle socket, std::int64_t deadline_ns)> sleep;
};

// That of the steady clock.
[[nodiscard]] pace real_pace();

struct surroundings {
    endpoint service;
    // Tried in turn, each visitor beginning after the one before it; "0" is any port.
    std::vector<std::string> client_ports;
    std::size_t next_client_port{0};
    pace time{real_pace()};
    std::int64_t answer_time_ns{1'000'000'000}; // an answer that takes longer counts as none
    std::int64_t quiet_time_ns{200'000'000};    // after which nothing more is to come
    bool may_save{false};                       // whether devices may be told to save their configuration
};

// The service on a port of this machine, visited from the ports that clients use. Throws std::runtime_error
// when "localhost" has no address.
[[nodiscard]] surroundings surroundings_of(const std::string& service_port);

// Whether anybody is there: a service answers a goodbye, whoever says it. Throws std::runtime_error with one
// line that says why the rules cannot be judged: nobody answers, or other clients take all room.
void expect_service(surroundings& around);

} // namespace vantu::orvanta::conformance
