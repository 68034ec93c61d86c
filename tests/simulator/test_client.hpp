// A client of bare datagrams over a real socket.
#pragma once

#include "network/socket.hpp"
#include "simulator/wire.hpp"
#include "support/buffered_record.hpp"

#include <string>

namespace simulator_tests {

class test_client {
  public:
    // Speaks from a free port of the host to the port of the same host.
    test_client(const std::string& host, const std::string& service_port);
    ~test_client();
    test_client(const test_client&) = delete;
    test_client& operator=(const test_client&) = delete;

    void send(const bytes& content);

    // The next datagram; empty, and the test fails, when none comes within 30 s.
    [[nodiscard]] bytes receive();

    // Drops datagrams until one begins with an operation of this code.
    [[nodiscard]] bytes receive_until(std::uint8_t code);

  private:
    vantu::orvanta::socket_handle socket_{vantu::orvanta::invalid_socket};
    vantu::orvanta::endpoint service_;
    vantu::orvanta::buffered_record record_;
};

} // namespace simulator_tests
