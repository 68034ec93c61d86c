// The checks that need no service: the loopback, the ports, the versions. Each is judged from what was seen,
// so that tests can show it anything.
#pragma once

#include "ctl/doctor/finding.hpp"
#include "ctl/doctor/port_holders.hpp"
#include "ctl/doctor/probe_socket.hpp"

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace vantu::orvanta::ctl {

inline constexpr std::uint16_t service_port = 54320;
inline constexpr std::uint16_t first_client_port = 54321;
inline constexpr std::uint16_t last_client_port = 54336;
inline constexpr std::size_t client_port_count = last_client_port - first_client_port + 1;

// The addresses of localhost, and what a datagram met that was sent to oneself.
struct loopback_view {
    resolution localhost;
    std::string failure_of_four; // at 127.0.0.1; empty: the datagram arrived
    std::string failure_of_six;  // at ::1
};
// Waits for both datagrams together no longer than this.
[[nodiscard]] loopback_view look_at_loopback(std::chrono::nanoseconds time);

// The library uses the first address of localhost: failed unless that is 127.0.0.1 or ::1 and carries
// datagrams. A warning when another address of localhost does not.
[[nodiscard]] finding check_loopback(const loopback_view& seen);

// Failed when nobody holds the service's port at the address that the library uses; a warning when the system
// has no list.
[[nodiscard]] finding check_service_port(const std::optional<std::vector<port_holder>>& holders,
                                         const std::string& address);

// The client ports that cannot be bound at this address.
[[nodiscard]] std::vector<std::uint16_t> taken_client_ports(const std::string& address);
// Failed when none of the sixteen is left, a warning when fewer than four are.
[[nodiscard]] finding check_client_ports(const std::vector<std::uint16_t>& taken,
                                         const std::vector<port_holder>& holders);

// A version as a number that rises, 0x020000 for 2.0.0, and as text.
struct version_of_code {
    std::uint32_t number;
    std::string text;
};
// Failed when the library's major version is another one, a warning when the library is older than the
// program.
[[nodiscard]] finding check_versions(const version_of_code& program, const version_of_code& library);

} // namespace vantu::orvanta::ctl
