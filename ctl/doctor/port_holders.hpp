// The programs that hold UDP ports of this machine. One source file a platform.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace vantu::orvanta::ctl {

// One socket that is bound.
struct port_holder {
    std::uint16_t port{0};
    std::string address;      // "127.0.0.1" or "::1"; "0.0.0.0" or "::" for all
    std::uint32_t process{0}; // 0: the system does not tell
    std::string program{};    // the file name of what the process runs; empty: the system does not tell
};

// The sockets bound to these ports, both included; nothing when the system has no list of them.
[[nodiscard]] std::optional<std::vector<port_holder>> holders_of(std::uint16_t first, std::uint16_t last);

// Whether what is sent to this address and the holder's port comes to the holder, as far as addresses tell.
[[nodiscard]] bool listens_at(const port_holder& holder, const std::string& address) noexcept;

// The processes, each once: "orvanta-simulator (process 4711) and a process that the system does not name".
[[nodiscard]] std::string processes_of(std::span<const port_holder> holders);
// Their addresses, each once: "127.0.0.1 and ::1".
[[nodiscard]] std::string addresses_of(std::span<const port_holder> holders);

// "a, b and c"
[[nodiscard]] std::string enumerated(const std::vector<std::string>& names);

} // namespace vantu::orvanta::ctl
