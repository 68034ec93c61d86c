// A UDP socket of the tests' own on the loopback interface; nothing of the code under test. One source file a
// platform.
#pragma once

#include "support/bytes.hpp"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace orvanta_tests {

// The system's address of a socket.
struct udp_address {
    alignas(8) std::array<std::byte, 128> storage{};
    int length{0};

    [[nodiscard]] bool operator==(const udp_address&) const = default;
};

// "127.0.0.1:54321" or "[::1]:54321".
[[nodiscard]] std::string text_of_address(const udp_address& address);

struct udp_datagram {
    bytes content;
    udp_address from;
};

class udp_socket {
  public:
    // Bound to the first address of a host, with a port in decimal ("0": any); not inherited by child
    // processes. Nothing when that cannot be had.
    [[nodiscard]] static std::optional<udp_socket> bound_to(const std::string& host, const std::string& port);

    udp_socket(udp_socket&& other) noexcept;
    ~udp_socket();
    udp_socket(const udp_socket&) = delete;
    udp_socket& operator=(const udp_socket&) = delete;
    udp_socket& operator=(udp_socket&&) = delete;

    [[nodiscard]] const udp_address& address() const { return address_; }
    [[nodiscard]] std::string port() const;

    // Whether the whole datagram went out.
    [[nodiscard]] bool send(const bytes& content, const udp_address& to) const;
    // The next datagram, or nothing when none waits.
    [[nodiscard]] std::optional<udp_datagram> receive() const;

    // Waits until something waits on one of the sockets; for each of them whether it is there.
    [[nodiscard]] static std::vector<bool> wait(const std::vector<const udp_socket*>& sockets);

  private:
    udp_socket() = default;

    static constexpr std::uintptr_t no_handle = ~std::uintptr_t{0};
    std::uintptr_t handle_{no_handle};
    udp_address address_;
};

} // namespace orvanta_tests
