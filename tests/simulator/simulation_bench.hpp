// A whole simulation on the test bench: peers are numbers, the clock is moved by hand, and what goes out
// is kept as bytes.
#pragma once

#include "simulator/bench.hpp"
#include "simulator/simulation/simulation.hpp"

namespace simulator_tests {

// The bytes of a request that names a device alone, and of those that carry more.
[[nodiscard]] bytes request_of(std::uint8_t code, std::uint8_t tag, std::uint32_t device_id,
                               const bytes& more = {});
[[nodiscard]] bytes open_request(std::uint8_t tag, std::uint32_t device_id);

class simulation_bench {
  public:
    // One Orvanta3 and one Palmetron where no devices are given.
    explicit simulation_bench(simulator::simulation_settings settings = {});

    // Gives the simulation a datagram and returns what goes out in return.
    sent_list send(unsigned from, const bytes& content);

    // Moves the clock and returns what goes out on the way.
    sent_list wait(std::int64_t nanoseconds);

    // Connects, opens the devices, lets a tick pass and throws all answers away.
    void enter(unsigned from, std::initializer_list<std::uint32_t> opened = {},
               std::uint64_t keep_alive_ns = 0);

    sent_list take();

    std::vector<std::string> lines; // what the simulation told
    std::vector<std::string> warnings;
    simulator::simulation tested;
};

} // namespace simulator_tests
