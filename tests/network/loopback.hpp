// Sockets on the loopback interface for the tests of the socket layer, each on a port of its own.
#pragma once

#include "network/socket.hpp"
#include "support/log_capture.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"
#include "vantu/orvanta/common/platform.hpp"

#include <cstdint>
#include <gtest/gtest.h>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <utility>
#include <vector>

namespace orvanta_tests {

inline constexpr std::int64_t patience_ns = 20 * vantu::orvanta::ns_per_second;

// The loopback addresses of the families that this machine has.
inline std::vector<std::string> loopback_hosts() {
    std::vector<std::string> hosts{"127.0.0.1"};
    const log_capture log;
    auto probe = vantu::orvanta::open_bound_socket("::1", "0");
    if (probe.status == vantu::orvanta::socket_status::ok) {
        hosts.emplace_back("::1");
    }
    vantu::orvanta::close_socket(probe.socket);
    return hosts;
}

inline std::string family_name(const testing::TestParamInfo<std::string>& host) {
    return host.param == "127.0.0.1" ? "ipv4" : "ipv6";
}

// A socket of the layer under test, closed in the end.
class loopback_socket {
  public:
    explicit loopback_socket(const std::string& host, const std::string& port = "0") : host_(host) {
        const auto opened = vantu::orvanta::open_bound_socket(host, port);
        EXPECT_EQ(opened.status, vantu::orvanta::socket_status::ok);
        socket_ = opened.socket;
        std::string text = vantu::orvanta::stringify_socket(socket_);
        text.pop_back();
        port_ = text.substr(text.rfind(':') + 1);
        address_ = vantu::orvanta::resolve_address(host_, port_).address;
    }
    ~loopback_socket() { vantu::orvanta::close_socket(socket_); }
    loopback_socket(const loopback_socket&) = delete;
    loopback_socket& operator=(const loopback_socket&) = delete;

    [[nodiscard]] vantu::orvanta::socket_handle handle() const { return socket_; }
    [[nodiscard]] int descriptor() const { return static_cast<int>(socket_); }
    [[nodiscard]] const std::string& port() const { return port_; }
    [[nodiscard]] const vantu::orvanta::endpoint& address() const { return address_; }
    void close() { vantu::orvanta::close_socket(socket_); }

    // The socket's state by the system, right now: POLLIN, POLLERR.
    [[nodiscard]] int state() const {
        pollfd entry{descriptor(), POLLIN, 0};
        poll(&entry, 1, 0);
        return entry.revents;
    }

    [[nodiscard]] bool wait() const {
        const vantu::orvanta::socket_handle sockets[] = {socket_};
        return vantu::orvanta::wait_for_packets(sockets,
                                                vantu::orvanta::platform::steady_now_ns() + patience_ns);
    }

    // Sends bytes past the layer under test.
    void send_raw(const std::vector<std::uint8_t>& bytes, const loopback_socket& to) const {
        const auto sent = sendto(descriptor(), bytes.data(), bytes.size(), 0,
                                 reinterpret_cast<const sockaddr*>(to.address().address.bytes),
                                 static_cast<socklen_t>(to.address().length));
        EXPECT_EQ(sent, static_cast<ssize_t>(bytes.size()));
    }

  private:
    std::string host_;
    vantu::orvanta::socket_handle socket_{vantu::orvanta::invalid_socket};
    std::string port_;
    vantu::orvanta::endpoint address_;
};

// A port on which nobody listens and which nobody else can take: its socket hears only itself, and the
// system refuses datagrams from anywhere else.
class closed_port {
  public:
    explicit closed_port(const std::string& host) : holder_(host) {
        const auto& own = holder_.address();
        EXPECT_EQ(connect(holder_.descriptor(), reinterpret_cast<const sockaddr*>(own.address.bytes),
                          static_cast<socklen_t>(own.length)),
                  0);
    }
    [[nodiscard]] const vantu::orvanta::endpoint& address() const { return holder_.address(); }

  private:
    loopback_socket holder_;
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

// Sends a datagram to a closed port and waits until the system's answer to it is there.
inline void provoke_refusal(const loopback_socket& from, const std::string& host) {
    auto packet = buffer_of({0xEE});
    const closed_port nobody(host);
    EXPECT_EQ(vantu::orvanta::send_packet(from.handle(), packet, nobody.address()),
              vantu::orvanta::socket_status::ok);
    EXPECT_TRUE(from.wait());
    EXPECT_NE(from.state() & POLLERR, 0);
}

class loopback_test : public testing::TestWithParam<std::string> {};

} // namespace orvanta_tests
