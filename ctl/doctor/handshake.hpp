// The handshake of a client, made with a socket of the doctor's own, and what its answer means.
#pragma once

#include "ctl/doctor/finding.hpp"
#include "ctl/doctor/handshake_answer.hpp"
#include "vantu/orvanta/result.hpp"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace vantu::orvanta::ctl {

struct handshake_view {
    handshake_answer answer;
    std::chrono::nanoseconds time{0}; // until the answer, when one came
};

// Asks the service at this address for a connection and says goodbye to it again. Waits no longer than this
// for the answer, and for the confirmation of the goodbye until then, so that it does not meet the next
// client on the port.
[[nodiscard]] handshake_view shake_hands(const std::string& address, std::uint16_t client_port,
                                         std::chrono::nanoseconds time);

// A connect divides its time among the sixteen client ports: this is what each one has.
[[nodiscard]] std::chrono::nanoseconds time_of_one_port(std::chrono::nanoseconds connect_time);

// Failed unless the service accepted, and then the library too could connect, whose failure is given
// otherwise; a warning when the acceptance took longer than a connect of this time waits on a port. The
// holder of the service's port is named in remedies: "orvanta-simulator (process 4711)"; empty when it is not
// known.
[[nodiscard]] finding check_handshake(const handshake_view& seen, const std::string& holder,
                                      std::chrono::nanoseconds connect_time,
                                      const std::optional<failure>& of_the_library);

} // namespace vantu::orvanta::ctl
