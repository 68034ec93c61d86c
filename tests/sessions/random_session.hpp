// One session of a client against a simulation with random faults, compared step by step with the reference
// reader and writer. Each test program has a kind of its own: core_session.cpp, flat_session.cpp.
#pragma once

#include "simulator/faults/faults.hpp"

#include <array>
#include <cstdint>
#include <map>

namespace orvanta_tests {

// The counts of a session, to be added up.
struct session_counts {
    std::uint64_t connects{0};
    std::uint64_t polls{0};
    std::uint64_t requests{0};
    std::uint64_t answers{0}; // to requests
    std::uint64_t ends_of_process{0};
    std::map<int, std::uint64_t> connect_codes;
    std::map<int, std::uint64_t> poll_codes;
    std::array<std::uint64_t, vantu::orvanta::simulator::faults.size()> faults{};

    void add(const session_counts& other) {
        connects += other.connects;
        polls += other.polls;
        requests += other.requests;
        answers += other.answers;
        ends_of_process += other.ends_of_process;
        for (const auto& [code, times] : other.connect_codes) {
            connect_codes[code] += times;
        }
        for (const auto& [code, times] : other.poll_codes) {
            poll_codes[code] += times;
        }
        for (std::size_t i = 0; i < faults.size(); ++i) {
            faults[i] += other.faults[i];
        }
    }
};

// Runs the session that belongs to a seed. Throws difference with what is not as the bytes say:
// - a connect's or a poll's code, event, keep-alive or device table,
// - the bytes of what is sent,
// - in the flat API, a one-shot handler that was called twice, or though its request was not sent, a failed
//   assumption outside the handshake's two unchecked reads, and a socket that is left open.
[[nodiscard]] session_counts run_random_session(std::uint64_t seed);

} // namespace orvanta_tests
