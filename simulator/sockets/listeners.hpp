// The sockets on which the service listens: one on 127.0.0.1 and, where the system has IPv6, one on
// ::1 with the same port.
#pragma once

#include "network/socket.hpp"

#include <array>
#include <span>
#include <string>
#include <vector>

namespace vantu::orvanta::simulator {

// The host of each socket, by the socket's place.
inline constexpr std::array listener_hosts{"127.0.0.1", "::1"};

class listeners {
  public:
    // Port 0 takes a free one. Throws std::runtime_error with one line when the port cannot be had on
    // both addresses.
    explicit listeners(const std::string& port);
    ~listeners();
    listeners(const listeners&) = delete;
    listeners& operator=(const listeners&) = delete;

    [[nodiscard]] std::span<const socket_handle> sockets() const noexcept { return sockets_; }

    // The port as decimal text, also where a free one was asked for.
    [[nodiscard]] const std::string& port() const noexcept { return port_; }

  private:
    [[nodiscard]] std::string try_open(const std::string& port);
    void close_all();

    std::vector<socket_handle> sockets_;
    std::string port_;
};

} // namespace vantu::orvanta::simulator
