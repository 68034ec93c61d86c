// One session of the client library against a simulation with random faults, compared poll by poll with the
// reference reader.
#pragma once

#include "simulator/faults/faults.hpp"

#include <array>
#include <cstdint>
#include <map>
#include <string>

namespace session_tests {

// What happened in sessions, to be added up.
struct session_counts {
    std::uint64_t connects{0};
    std::uint64_t polls{0};
    std::uint64_t requests{0};
    std::uint64_t handlers{0};
    std::uint64_t ends_of_process{0};
    std::map<int, std::uint64_t> connect_codes;
    std::map<int, std::uint64_t> poll_codes;
    std::array<std::uint64_t, vantu::orvanta::simulator::faults.size()> faults{};

    void add(const session_counts& other);
};

// Runs the session that belongs to a seed. Throws std::runtime_error with what went wrong:
// - a connect or a poll with another outcome than the bytes say,
// - a device table that is not what was delivered,
// - a one-shot handler that was called twice, or though its request was not sent,
// - a failed assumption of the library outside the handshake's two unchecked reads,
// - a socket that is left open.
[[nodiscard]] session_counts run_random_session(std::uint64_t seed);

// The faults of a session, as the verbs that add them; the same ones that run_random_session uses.
[[nodiscard]] std::string faults_of_session(std::uint64_t seed);

} // namespace session_tests
