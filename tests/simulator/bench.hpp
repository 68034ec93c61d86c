// A service core on the test bench: peers are numbers, the clock is moved by hand, and what the
// service sends is kept as bytes.
#pragma once

#include "simulator/service/service.hpp"
#include "simulator/wire.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"

#include <gtest/gtest.h>
#include <iosfwd>
#include <string>
#include <vector>

namespace simulator_tests {

namespace simulator = vantu::orvanta::simulator;

// One datagram of the service and the peer that it goes to.
struct sent {
    unsigned to;
    bytes content;

    bool operator==(const sent&) const = default;
};
void PrintTo(const sent& value, std::ostream* out);
using sent_list = std::vector<sent>;

[[nodiscard]] simulator::peer peer_of(unsigned number);

class bench {
  public:
    // One Orvanta3 and one Palmetron where nothing else is asked for.
    explicit bench(simulator::service_settings settings = {}, std::size_t orvanta3_count = 1,
                   std::size_t palmetron_count = 1);

    // Gives the service a datagram and returns what it sends in return.
    sent_list send(unsigned from, const bytes& content);

    // Moves the clock and returns what the service sends at the new time.
    sent_list wait(std::int64_t nanoseconds);

    // Connects, opens the devices and throws the answers away.
    void enter(unsigned from, std::initializer_list<std::uint32_t> opened = {},
               std::uint64_t keep_alive_ns = 0);

    sent_list take();

    std::int64_t now{10 * ns_per_second};
    std::vector<std::string> lines; // what the service told
    std::vector<std::uint32_t> saved;
    bool saving_works{true};
    simulator::service core;
};

// The refusal of a request: op 240 with the request's tag, the device and the status.
[[nodiscard]] bytes refusal(std::uint8_t tag, std::uint32_t device_id, std::uint8_t status);

} // namespace simulator_tests
