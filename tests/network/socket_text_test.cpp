// Addresses and errors as text.
#include "network/loopback.hpp"
#include "network/socket_shared.hpp"
#include "support/log_capture.hpp"
#include "support/system_calls.hpp"

#include <cerrno>
#include <gmock/gmock.h>
#include <netdb.h>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta;
using testing::ElementsAre;
using testing::IsEmpty;

// An endpoint written out by hand: family 2 is IPv4, 10 IPv6 (in the machine's order), then the port and
// the address in network order.
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

endpoint ipv6_loopback(std::uint16_t port) {
    endpoint address;
    address.length = 28;
    address.address.bytes[0] = std::byte{10};
    address.address.bytes[2] = static_cast<std::byte>(port >> 8);
    address.address.bytes[3] = static_cast<std::byte>(port & 0xFF);
    address.address.bytes[23] = std::byte{1};
    return address;
}

constexpr const char* address_failure = "WARNING message: unable to stringify the addr with code: ";
constexpr const char* socket_failure = "WARNING message: unable to stringify the handle/socket with code: ";

TEST(address_text, of_ipv4_is_16_characters_with_its_final_zero) {
    const log_capture log;
    const std::string text = stringify_addr(ipv4_loopback(54321));
    EXPECT_EQ(text.size(), 16U);
    EXPECT_EQ(text, std::string("127.0.0.1:54321\0", 16));
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST(address_text, of_ipv6_stands_in_brackets) {
    EXPECT_EQ(stringify_addr(ipv6_loopback(54321)), std::string("[::1]:54321\0", 12));
}

TEST(address_text, names_the_zone_of_a_link_local_address) {
    endpoint address = ipv6_loopback(54320);
    address.address.bytes[8] = std::byte{0xFE};
    address.address.bytes[9] = std::byte{0x80};
    address.address.bytes[24] = std::byte{1}; // the loopback interface
    EXPECT_EQ(stringify_addr(address), std::string("[fe80::1%lo]:54320\0", 19));
}

TEST(address_text, of_port_0_keeps_the_port) {
    EXPECT_EQ(stringify_addr(ipv4_loopback(0)), std::string("127.0.0.1:0\0", 12));
}

TEST(address_text, of_another_family_is_empty) {
    const log_capture log;
    endpoint address = ipv4_loopback(54321);
    address.address.bytes[0] = std::byte{1};
    EXPECT_EQ(stringify_addr(address), "");
    EXPECT_EQ(stringify_addr(endpoint{}), "");
    const std::string line = std::string(address_failure) + "Address family not supported by protocol";
    EXPECT_THAT(log.lines(), ElementsAre(line, line));
}

TEST(address_text, of_an_impossible_length_is_empty) {
    const log_capture log;
    endpoint address = ipv4_loopback(54321);
    for (const std::int32_t length : {-1, 129}) {
        address.length = length;
        EXPECT_EQ(stringify_addr(address), "");
    }
    const std::string line = std::string(address_failure) + "Invalid argument";
    EXPECT_THAT(log.lines(), ElementsAre(line, line));
}

TEST(address_text, of_a_cut_address_is_empty) {
    const log_capture log;
    endpoint address = ipv6_loopback(54321);
    address.length = 16;
    EXPECT_EQ(stringify_addr(address), "");
    EXPECT_THAT(log.lines(), ElementsAre(std::string(address_failure) + gai_strerror(EAI_FAMILY)));
}

TEST(address_text, that_the_system_cannot_make_is_empty) {
    const log_capture log;
    scripted_calls calls;
    calls.end_with(system_call::getnameinfo, EAI_SYSTEM, ENOMEM);
    EXPECT_EQ(stringify_addr(ipv4_loopback(54321)), "");
    calls.end_with(system_call::getnameinfo, EAI_OVERFLOW);
    EXPECT_EQ(stringify_addr(ipv4_loopback(54321)), "");
    EXPECT_THAT(log.lines(), ElementsAre(std::string(address_failure) + "Cannot allocate memory",
                                         std::string(address_failure) + gai_strerror(EAI_OVERFLOW)));
}

TEST(socket_text, is_that_of_its_local_address) {
    const log_capture log;
    const loopback_socket socket("127.0.0.1");
    EXPECT_EQ(stringify_socket(socket.handle()), "127.0.0.1:" + socket.port() + '\0');
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST(socket_text, of_the_invalid_handle_is_empty) {
    const log_capture log;
    EXPECT_EQ(stringify_socket(invalid_socket), "");
    EXPECT_THAT(log.lines(), ElementsAre(std::string(socket_failure) + "Bad file descriptor"));
}

TEST(socket_text, of_a_socket_whose_address_is_refused_is_empty) {
    const loopback_socket socket("127.0.0.1");
    const log_capture log;
    scripted_calls calls;
    calls.fail(system_call::getsockname, ENOBUFS);
    EXPECT_EQ(stringify_socket(socket.handle()), "");
    EXPECT_THAT(log.lines(), ElementsAre(std::string(socket_failure) + "No buffer space available"));
}

TEST(socket_text, that_the_system_cannot_make_is_empty_after_one_line) {
    const loopback_socket socket("127.0.0.1");
    const log_capture log;
    scripted_calls calls;
    calls.end_with(system_call::getnameinfo, EAI_SYSTEM, ENOMEM);
    EXPECT_EQ(stringify_socket(socket.handle()), "");
    EXPECT_THAT(log.lines(), ElementsAre(std::string(socket_failure) + "Cannot allocate memory"));
}

TEST(default_service_port, is_54320) {
    EXPECT_EQ(default_port(), "54320");
}

TEST(system_error_text, loses_one_trailing_line_feed_and_no_more) {
    using socket_shared::one_line_of;
    EXPECT_EQ(one_line_of("No route to host"), "No route to host");
    EXPECT_EQ(one_line_of("No route to host\n"), "No route to host");
    EXPECT_EQ(one_line_of("No route to host\n\n"), "No route to host\n");
    EXPECT_EQ(one_line_of("No route to host.\r\n"), "No route to host.\r");
    EXPECT_EQ(one_line_of("No\nroute"), "No\nroute");
}

TEST(system_error_text, is_unknown_where_there_is_none) {
    using socket_shared::one_line_of;
    EXPECT_EQ(one_line_of(nullptr), "unknown");
    EXPECT_EQ(one_line_of(""), "unknown");
    EXPECT_EQ(one_line_of("\n"), "unknown");
}

} // namespace
} // namespace orvanta_tests
