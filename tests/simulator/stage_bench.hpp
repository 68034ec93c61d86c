// The stage of faults on the test bench: peers are numbers, datagrams are bytes written by hand.
#pragma once

#include "simulator/bench.hpp"
#include "simulator/faults/fault_stage.hpp"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace simulator_tests {

class stage_bench {
  public:
    explicit stage_bench(std::uint64_t seed = 1) : stage(seed) {}

    // A rule as it is typed: "truncate 17@op=66".
    void add(std::string_view line, std::initializer_list<unsigned> clients = {});

    // Gives the stage a datagram and returns what comes out of it that way.
    std::vector<bytes> in(const bytes& content, unsigned from = 1);
    std::vector<bytes> out(const bytes& content, unsigned to = 1);

    // Moves the clock and returns what the stage lets go, to the service and to clients.
    sent_list wait(std::int64_t nanoseconds);

    // What has come out and was not taken yet.
    std::vector<bytes> arrivals();
    sent_list departures();
    // "goodbye", "unplug 3" and so on.
    std::vector<std::string> actions();

    // Connects a client: the request in, the acceptance out.
    void connect(unsigned who = 1);

    // How often the only rule of a kind has fitted and happened, as "3/1".
    [[nodiscard]] std::string counts(simulator::fault_kind kind) const;

    std::int64_t now{0};
    simulator::fault_stage stage;
};

// Requests and answers, written out by hand.
inline const bytes ask_gravity{0xE9, 0x9E, 0x01, 0x00, 0x00, 0x00, 0xFF, 0x42,
                               0x04, 0x00, 0x05, 0x01, 0x00, 0x00, 0x00};
inline const bytes gravity{0xE9, 0x9E, 0x01, 0x00, 0x00, 0x00, 0xFF, 0x42, 0x09, 0x00,
                           0x05, 0x01, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x80, 0x3F};
inline const bytes power_supply{0xE9, 0x9E, 0x01, 0x00, 0x00, 0x00, 0xFF, 0x51,
                                0x05, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01};
inline const bytes acceptance{0xE9, 0x9E, 0x01, 0x00, 0x00, 0x00, 0xFF, 0x04, 0x08, 0x00,
                              0x00, 0x4D, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00};

} // namespace simulator_tests
