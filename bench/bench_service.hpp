// A connected client with the bare sockets to measure it against, and datagrams to feed both.
#pragma once

#include "vantu/orvanta/client.hpp"

#include <cstddef>
#include <cstdint>
#include <netinet/in.h>
#include <string>
#include <vector>

namespace vantu::orvanta::bench {

using datagram = std::vector<std::uint8_t>;

// A datagram of `count` cursor states of device 1.
[[nodiscard]] datagram cursor_states(int count);

// A UDP socket of its own on an ephemeral loopback port, non-blocking, with 1 MiB of receive buffer.
class bare_socket {
  public:
    bare_socket();
    ~bare_socket();
    bare_socket(const bare_socket&) = delete;
    bare_socket& operator=(const bare_socket&) = delete;

    [[nodiscard]] int descriptor() const { return descriptor_; }
    [[nodiscard]] const sockaddr_storage& address() const { return address_; }
    [[nodiscard]] socklen_t address_length() const { return length_; }
    [[nodiscard]] std::string port() const;

    void send(const datagram& bytes, const sockaddr_storage& to, socklen_t to_length) const;
    // Drops what waits.
    void drain() const;

  private:
    int descriptor_{-1};
    sockaddr_storage address_{};
    socklen_t length_{0};
};

// A client connected to a service socket that the benchmark plays itself.
class connected_client {
  public:
    explicit connected_client(client::config callbacks = {});

    client owner;
    bare_socket service;
    sockaddr_storage client_address{};
    socklen_t client_address_length{0};

    void feed(const datagram& bytes) const { service.send(bytes, client_address, client_address_length); }
};

} // namespace vantu::orvanta::bench
