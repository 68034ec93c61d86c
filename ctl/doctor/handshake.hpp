// The handshake of a client, made with a socket of the doctor's own, and what its answer means.
#pragma once

#include "ctl/doctor/finding.hpp"
#include "ctl/doctor/handshake_answer.hpp"

#include <chrono>
#include <cstdint>
#include <string>

namespace vantu::orvanta::ctl {

struct handshake_view {
    handshake_answer answer;
    std::chrono::nanoseconds time{0}; // until the answer
};

// Asks the service at this address for a connection and says goodbye to it again. Waits no longer than this
// for the answer, and for the confirmation of the goodbye until then, so that it does not meet the next
// client on the port.
[[nodiscard]] handshake_view shake_hands(const std::string& address, std::uint16_t client_port,
                                         std::chrono::nanoseconds time);

// A connect divides its time among the sixteen client ports, so an acceptance that comes after a sixteenth of
// it has failed.
[[nodiscard]] std::chrono::nanoseconds time_of_one_port(std::chrono::nanoseconds connect_time);

// Failed unless the service accepted within time_of_one_port(connect_time). The holder of the service's port
// is named in remedies: "orvanta-simulator (process 4711)"; empty when it is not known.
[[nodiscard]] finding check_handshake(const handshake_view& seen, const std::string& holder,
                                      std::chrono::nanoseconds connect_time);

} // namespace vantu::orvanta::ctl
