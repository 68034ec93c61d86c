// A client of bare datagrams over a real socket.
#include "simulator/test_client.hpp"

#include <gtest/gtest.h>

namespace simulator_tests {

using namespace vantu::orvanta;

test_client::test_client(const std::string& host, const std::string& service_port) {
    const opened_socket opened = open_bound_socket(host, "0");
    EXPECT_EQ(opened.status, socket_status::ok);
    socket_ = opened.socket;
    const resolved_endpoint resolved = resolve_address(host, service_port);
    EXPECT_EQ(resolved.status, socket_status::ok);
    service_ = resolved.address;
}

test_client::~test_client() {
    close_socket(socket_);
}

void test_client::send(const bytes& content) {
    byte_buffer buffer(constants::mode_write);
    for (const std::uint8_t value : content) {
        buffer.write(value);
    }
    EXPECT_EQ(send_packet(socket_, buffer, service_), socket_status::ok);
}

bytes test_client::receive() {
    constexpr std::int64_t patience_ns = 30'000'000'000;
    record_.buffer.reset();
    EXPECT_EQ(recv_packet_overlapped(socket_, record_), socket_status::ok);
    EXPECT_EQ(get_overlapped_result(socket_, record_, patience_ns), socket_status::ok);
    const auto* begin = reinterpret_cast<const std::uint8_t*>(record_.buffer.unread());
    return {begin, begin + record_.buffer.read_len()};
}

bytes test_client::receive_until(std::uint8_t code) {
    for (;;) {
        bytes content = receive();
        if (content.empty() || (content.size() > 7 && content[7] == code)) {
            return content;
        }
    }
}

} // namespace simulator_tests
