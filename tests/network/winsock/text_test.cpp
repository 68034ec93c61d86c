// Addresses and errors as text, and the start of Winsock.
#include "network/winsock/loopback.hpp"

#include "network/socket_shared.hpp"
#include "support/traps.hpp"

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta;
using testing::ElementsAre;
using testing::IsEmpty;

// An endpoint written out by hand: family 2 is IPv4, then the port and the address in network order.
endpoint ipv4_loopback(std::uint16_t port) {
    endpoint address;
    address.length = 16;
    address.address.bytes[0] = std::byte{2};
    address.address.bytes[2] = static_cast<std::byte>(port >> 8);
    address.address.bytes[3] = static_cast<std::byte>(port & 0xFF);
    address.address.bytes[4] = std::byte{127};
    address.address.bytes[7] = std::byte{1};
    return address;
}

// Family 23 is IPv6 here.
endpoint ipv6_loopback(std::uint16_t port) {
    endpoint address;
    address.length = 28;
    address.address.bytes[0] = std::byte{23};
    address.address.bytes[2] = static_cast<std::byte>(port >> 8);
    address.address.bytes[3] = static_cast<std::byte>(port & 0xFF);
    address.address.bytes[23] = std::byte{1};
    return address;
}

TEST(winsock_address_text, of_ipv4_is_16_characters_with_its_final_zero) {
    const log_capture log;
    EXPECT_EQ(stringify_addr(ipv4_loopback(54321)), std::string("127.0.0.1:54321\0", 16));
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST(winsock_address_text, of_ipv6_stands_in_brackets) {
    EXPECT_EQ(stringify_addr(ipv6_loopback(54321)), std::string("[::1]:54321\0", 12));
}

TEST(winsock_address_text, that_the_system_cannot_make_is_empty) {
    const log_capture log;
    EXPECT_EQ(stringify_addr(endpoint{}), "");
    scripted_winsock calls;
    calls.fail(winsock_call::address_to_text, WSAEFAULT);
    EXPECT_EQ(stringify_addr(ipv4_loopback(1)), "");
    const std::string head = "WARNING message: unable to stringify the addr with code: ";
    EXPECT_THAT(log.lines(),
                ElementsAre(testing::StartsWith(head), head + socket_shared::error_text(WSAEFAULT)));
}

TEST(winsock_socket_text, is_that_of_its_local_address) {
    const log_capture log;
    const loopback_socket socket;
    EXPECT_EQ(stringify_socket(socket.handle()), "127.0.0.1:" + socket.port() + '\0');
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST(winsock_socket_text, that_the_system_cannot_make_is_empty_after_one_line) {
    const loopback_socket socket;
    const log_capture log;
    EXPECT_EQ(stringify_socket(invalid_socket), "");
    scripted_winsock calls;
    calls.fail(winsock_call::getsockname, WSAENOBUFS);
    EXPECT_EQ(stringify_socket(socket.handle()), "");
    calls.fail(winsock_call::address_to_text, WSAEFAULT);
    EXPECT_EQ(stringify_socket(socket.handle()), "");
    const std::string head = "WARNING message: unable to stringify the handle/socket with code: ";
    EXPECT_THAT(log.lines(), ElementsAre(head + socket_shared::error_text(WSAENOTSOCK),
                                         head + socket_shared::error_text(WSAENOBUFS),
                                         head + socket_shared::error_text(WSAEFAULT)));
}

TEST(winsock_error, has_the_systems_text_without_its_last_line_feed_and_no_more) {
    scripted_winsock calls;
    calls.format_as("The system's own text.\r\n");
    EXPECT_EQ(socket_shared::error_text(WSAEWOULDBLOCK), "The system's own text.\r");
    calls.format_as("Two lines\n\n");
    EXPECT_EQ(socket_shared::error_text(WSAEWOULDBLOCK), "Two lines\n");
}

TEST(winsock_error, has_a_text_of_our_own_where_the_system_has_none) {
    scripted_winsock calls;
    calls.fail(winsock_call::format_message, ERROR_MR_MID_NOT_FOUND, 1, scripted_winsock::always);
    EXPECT_EQ(socket_shared::error_text(WSAEWOULDBLOCK), "The call would have to wait.");
    EXPECT_EQ(socket_shared::error_text(WSAEMSGSIZE), "The datagram is larger than the room for it.");
    EXPECT_EQ(socket_shared::error_text(WSAENOBUFS), "There is no buffer space left.");
}

TEST(winsock_error, is_unknown_where_nobody_has_a_text) {
    EXPECT_EQ(socket_shared::error_text(0x2FFFFFFF), "unknown");
}

TEST(winsock_error, has_a_text_under_this_system_for_every_status_that_is_logged) {
    for (const std::uint32_t error : {WSAEWOULDBLOCK, WSAEMSGSIZE, WSAENOBUFS, WSAENOTSOCK, WSAEAFNOSUPPORT,
                                      WSAEADDRINUSE, WSAECONNRESET, WSAHOST_NOT_FOUND, WSAENETDOWN}) {
        const std::string text = socket_shared::error_text(error);
        EXPECT_NE(text, "unknown") << error;
        EXPECT_NE(text.back(), '\n') << error;
    }
}

TEST(winsock_startup, asks_for_winsock_and_logs_nothing) {
    const log_capture log;
    const scripted_winsock calls;
    socket_startup();
    EXPECT_EQ(calls.count(winsock_call::startup), 1);
    EXPECT_THAT(log.lines(), IsEmpty());
}

using winsock_startup_death_test = death_test;

TEST_F(winsock_startup_death_test, that_fails_is_logged_and_ends_the_process) {
    const auto start = [] {
        scripted_winsock calls;
        calls.fail(winsock_call::startup, WSASYSNOTREADY);
        calls.format_as("Not ready.\n");
        socket_startup();
    };
    EXPECT_EXIT(start(), ended_by_trap,
                testing::ContainsRegex("ERROR socket_winsock.cpp \\d+ MSG message: unable to startup winsock "
                                       "with code: Not ready\\."));
}

} // namespace
} // namespace orvanta_tests
