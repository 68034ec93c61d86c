// Sockets on the loopback interface for the tests of the socket layer on Windows.
#pragma once

#include "network/socket.hpp"
#include "support/log_capture.hpp"
#include "support/open_handles.hpp"
#include "support/winsock_calls.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"
#include "vantu/orvanta/common/platform.hpp"

#include <cstdint>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>
#include <winsock2.h>

namespace orvanta_tests {

inline constexpr std::int64_t patience_ns = 20 * vantu::orvanta::ns_per_second;

// Winsock is started once for all tests of the program.
inline const bool winsock_started = [] {
    vantu::orvanta::socket_startup();
    return true;
}();

// A socket of the layer under test, closed in the end.
class loopback_socket {
  public:
    explicit loopback_socket(const std::string& host = "127.0.0.1", const std::string& port = "0") {
        const auto opened = vantu::orvanta::open_bound_socket(host, port);
        EXPECT_EQ(opened.status, vantu::orvanta::socket_status::ok);
        socket_ = opened.socket;
        std::string text = vantu::orvanta::stringify_socket(socket_);
        EXPECT_FALSE(text.empty());
        text.pop_back();
        port_ = text.substr(text.rfind(':') + 1);
        address_ = vantu::orvanta::resolve_address(host, port_).address;
    }
    ~loopback_socket() { vantu::orvanta::close_socket(socket_); }
    loopback_socket(const loopback_socket&) = delete;
    loopback_socket& operator=(const loopback_socket&) = delete;

    [[nodiscard]] vantu::orvanta::socket_handle handle() const { return socket_; }
    [[nodiscard]] const std::string& port() const { return port_; }
    [[nodiscard]] const vantu::orvanta::endpoint& address() const { return address_; }
    void close() { vantu::orvanta::close_socket(socket_); }

    [[nodiscard]] bool wait() const {
        const vantu::orvanta::socket_handle sockets[] = {socket_};
        return vantu::orvanta::wait_for_packets(sockets,
                                                vantu::orvanta::platform::steady_now_ns() + patience_ns);
    }

    // Sends bytes past the layer under test.
    void send_raw(const std::vector<std::uint8_t>& bytes, const loopback_socket& to) const {
        const int sent =
            sendto(socket_, reinterpret_cast<const char*>(bytes.data()), static_cast<int>(bytes.size()), 0,
                   reinterpret_cast<const sockaddr*>(to.address().address.bytes), to.address().length);
        EXPECT_EQ(sent, static_cast<int>(bytes.size()));
    }

  private:
    vantu::orvanta::socket_handle socket_{vantu::orvanta::invalid_socket};
    std::string port_;
    vantu::orvanta::endpoint address_;
};

inline vantu::orvanta::byte_buffer buffer_of(const std::vector<std::uint8_t>& bytes) {
    vantu::orvanta::byte_buffer buffer(vantu::orvanta::constants::mode_write);
    for (const std::uint8_t byte : bytes) {
        buffer.write(byte);
    }
    return buffer;
}

inline std::vector<std::uint8_t> unread_bytes(const vantu::orvanta::byte_buffer& buffer) {
    const auto* first = reinterpret_cast<const std::uint8_t*>(buffer.unread());
    return {first, first + buffer.read_len()};
}

} // namespace orvanta_tests
