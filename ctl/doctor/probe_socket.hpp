// UDP sockets of the doctor's own: it looks at the machine without the library. One source file a platform.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace vantu::orvanta::ctl {

// The addresses of a name in the system's order, as "127.0.0.1" or "::1", each once.
struct resolution {
    std::vector<std::string> addresses;
    std::string refusal; // why there are none
};
[[nodiscard]] resolution resolve(const std::string& name);

// A datagram that came to a socket, or why none did.
enum class reception_kind : std::uint8_t {
    datagram,
    silence,
    closed_port, // the system says that nobody holds the port
    refused,     // the system refuses to receive
};

struct reception {
    reception_kind kind{reception_kind::silence};
    std::vector<std::byte> bytes{};
    std::string refusal{};
};

class probe_socket {
  public:
    using time_point = std::chrono::steady_clock::time_point;

    // Bound to an address of this machine, 0 being any port. Throws std::system_error when that is refused.
    probe_socket(const std::string& address, std::uint16_t port);
    ~probe_socket();
    probe_socket(const probe_socket&) = delete;
    probe_socket& operator=(const probe_socket&) = delete;

    [[nodiscard]] std::uint16_t port() const;

    // From here on only this partner is spoken to and heard. Throws std::system_error.
    void connect(const std::string& address, std::uint16_t port);
    // Throws std::system_error.
    void send(std::span<const std::byte> bytes);
    // Waits for the next datagram. Throws failure_with_status when interrupted.
    [[nodiscard]] reception receive(time_point until);

  private:
    std::uintptr_t handle_;
};

} // namespace vantu::orvanta::ctl
