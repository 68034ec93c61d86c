// Resolving, opening, binding and closing by Winsock.
#include "network/winsock/loopback.hpp"

#include "network/socket_shared.hpp"

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

std::string unable_to_resolve_line(const std::string& where, int error) {
    return "WARNING message: unable to getaddrinfo for '" + where +
           "' with code: " + socket_shared::error_text(static_cast<std::uint32_t>(error));
}

int option_of(socket_handle socket, int option) {
    int value = 0;
    int length = sizeof value;
    EXPECT_EQ(getsockopt(socket, SOL_SOCKET, option, reinterpret_cast<char*>(&value), &length), 0);
    return value;
}

TEST(winsock_open, gives_a_non_blocking_socket_that_children_do_not_inherit) {
    const log_capture log;
    auto opened = open_bound_socket("127.0.0.1", "0");
    ASSERT_EQ(opened.status, socket_status::ok);
    char byte = 0;
    EXPECT_EQ(recv(opened.socket, &byte, 1, 0), SOCKET_ERROR);
    EXPECT_EQ(WSAGetLastError(), WSAEWOULDBLOCK);
    DWORD flags = HANDLE_FLAG_INHERIT;
    EXPECT_NE(GetHandleInformation(reinterpret_cast<HANDLE>(opened.socket), &flags), 0);
    EXPECT_EQ(flags & HANDLE_FLAG_INHERIT, 0U);
    close_socket(opened.socket);
    EXPECT_EQ(opened.socket, invalid_socket);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST(winsock_open, takes_the_port_for_itself_alone_and_asks_for_a_receive_buffer) {
    const loopback_socket socket;
    EXPECT_NE(option_of(socket.handle(), SO_EXCLUSIVEADDRUSE), 0);
    const loopback_socket plain;
    const int mebibyte = 1 << 20;
    ASSERT_EQ(setsockopt(plain.handle(), SOL_SOCKET, SO_RCVBUF, reinterpret_cast<const char*>(&mebibyte),
                         sizeof mebibyte),
              0);
    EXPECT_EQ(option_of(socket.handle(), SO_RCVBUF), option_of(plain.handle(), SO_RCVBUF));
}

TEST(winsock_open, takes_a_socket_that_grants_no_option) {
    scripted_winsock calls;
    calls.fail(winsock_call::setsockopt, WSAENOPROTOOPT, 1, scripted_winsock::always);
    const log_capture log;
    auto opened = open_bound_socket("127.0.0.1", "0");
    EXPECT_EQ(opened.status, socket_status::ok);
    EXPECT_EQ(calls.count(winsock_call::setsockopt), 2);
    EXPECT_THAT(log.lines(), IsEmpty());
    close_socket(opened.socket);
}

TEST(winsock_open, reports_a_port_that_is_taken) {
    const loopback_socket holder;
    const auto open_taken_port = [&holder] {
        const scripted_winsock calls;
        const log_capture log;
        const auto opened = open_bound_socket("127.0.0.1", holder.port());
        EXPECT_EQ(opened.status, socket_status::unavailable);
        EXPECT_EQ(opened.socket, invalid_socket);
        EXPECT_THAT(log.lines(),
                    ElementsAre("WARNING no valid interface to bind '127.0.0.1:" + holder.port() + "'"));
        EXPECT_EQ(calls.count(winsock_call::close), 1);
        EXPECT_EQ(calls.count(winsock_call::freeaddrinfo), 1);
    };
    EXPECT_EQ(handles_left_by(open_taken_port), 0);
}

TEST(winsock_open, resolves_a_numeric_address) {
    const auto found = resolve_address("127.0.0.1", "54321");
    ASSERT_EQ(found.status, socket_status::ok);
    EXPECT_EQ(found.address.length, 16);
    // The port stands in network order after the family: 54321 is 0xD431.
    EXPECT_EQ(found.address.address.bytes[2], std::byte{0xD4});
    EXPECT_EQ(found.address.address.bytes[3], std::byte{0x31});
}

TEST(winsock_walk, closes_every_socket_that_cannot_be_bound) {
    const auto open_taken_ports = [] {
        scripted_winsock calls;
        calls.resolve_to({"127.0.0.1", "127.0.0.2"}).fail(winsock_call::bind, WSAEADDRINUSE, 1, 2);
        const log_capture log;
        EXPECT_EQ(open_bound_socket("somewhere", "54321").status, socket_status::unavailable);
        EXPECT_THAT(log.lines(), ElementsAre("WARNING no valid interface to bind 'somewhere:54321'"));
        EXPECT_EQ(calls.count(winsock_call::open), 2);
        EXPECT_EQ(calls.count(winsock_call::bind), 2);
        EXPECT_EQ(calls.count(winsock_call::close), 2);
    };
    EXPECT_EQ(handles_left_by(open_taken_ports), 0);
}

TEST(winsock_walk, takes_the_next_address_when_the_first_has_no_socket_or_cannot_be_bound) {
    for (const winsock_call failing : {winsock_call::open, winsock_call::bind}) {
        scripted_winsock calls;
        calls.resolve_to({"127.0.0.1", "127.0.0.2"}).fail(failing, WSAENOBUFS);
        const log_capture log;
        auto opened = open_bound_socket("somewhere", "0");
        ASSERT_EQ(opened.status, socket_status::ok);
        EXPECT_THAT(stringify_socket(opened.socket), StartsWith("127.0.0.2:"));
        EXPECT_THAT(log.lines(), IsEmpty());
        close_socket(opened.socket);
    }
}

TEST(winsock_walk, is_unavailable_when_there_is_no_socket_or_no_address) {
    const log_capture log;
    {
        scripted_winsock calls;
        calls.fail(winsock_call::open, WSAEMFILE, 1, scripted_winsock::always);
        EXPECT_EQ(open_bound_socket("127.0.0.1", "54321").status, socket_status::unavailable);
        EXPECT_EQ(calls.count(winsock_call::close), 0);
        EXPECT_EQ(calls.count(winsock_call::freeaddrinfo), 1);
    }
    {
        scripted_winsock calls;
        calls.resolve_to_nothing();
        EXPECT_EQ(open_bound_socket("127.0.0.1", "54321").status, socket_status::unavailable);
    }
    const std::string line = "WARNING no valid interface to bind '127.0.0.1:54321'";
    EXPECT_THAT(log.lines(), ElementsAre(line, line));
}

TEST(winsock_walk, gives_up_and_keeps_the_socket_that_cannot_be_made_non_blocking) {
    const auto open_blocking_socket = [] {
        scripted_winsock calls;
        calls.resolve_to({"127.0.0.1", "127.0.0.2"}).fail(winsock_call::ioctl, WSAENETDOWN);
        const log_capture log;
        const auto opened = open_bound_socket("127.0.0.1", "0");
        EXPECT_EQ(opened.status, socket_status::os_error);
        EXPECT_EQ(opened.socket, invalid_socket);
        EXPECT_THAT(log.lines(),
                    ElementsAre("WARNING message: unable to ioctl non-block the socket with code: " +
                                socket_shared::error_text(WSAENETDOWN)));
        EXPECT_EQ(calls.count(winsock_call::open), 1);
        EXPECT_EQ(calls.count(winsock_call::freeaddrinfo), 1);
        EXPECT_EQ(calls.count(winsock_call::close), 0);
    };
    EXPECT_EQ(handles_left_by(open_blocking_socket), 1);
}

TEST(winsock_resolver, takes_the_first_of_several_addresses_and_leaves_the_list) {
    scripted_winsock calls;
    calls.resolve_to({"127.0.0.2", "127.0.0.1"});
    const auto found = resolve_address("somewhere", "54320");
    ASSERT_EQ(found.status, socket_status::ok);
    EXPECT_EQ(stringify_addr(found.address), "127.0.0.2:54320" + std::string(1, '\0'));
    EXPECT_EQ(calls.count(winsock_call::freeaddrinfo), 0);
}

// The numbers of AI_PASSIVE, a datagram socket and UDP are the same on both systems.
TEST(winsock_resolver, is_asked_for_addresses_to_bind_datagram_sockets_to) {
    const scripted_winsock calls;
    auto opened = open_bound_socket("127.0.0.1", "0");
    close_socket(opened.socket);
    EXPECT_EQ(calls.hints(), (resolver_hints{.flags = 1, .family = 0, .type = 2, .protocol = 17}));
}

TEST(winsock_resolver, is_asked_for_any_address_of_the_service_that_speaks_udp) {
    const scripted_winsock calls;
    EXPECT_EQ(resolve_address("127.0.0.1", "54320").status, socket_status::ok);
    EXPECT_EQ(calls.hints(), (resolver_hints{.flags = 0, .family = 0, .type = 0, .protocol = 17}));
}

TEST(winsock_resolver, reports_its_failure_with_the_systems_text) {
    scripted_winsock calls;
    calls.fail(winsock_call::getaddrinfo, WSAHOST_NOT_FOUND, 1, 2);
    const log_capture log;
    EXPECT_EQ(resolve_address("localhost", "54320").status, socket_status::os_error);
    EXPECT_EQ(open_bound_socket("localhost", "54321").status, socket_status::os_error);
    EXPECT_THAT(log.lines(), ElementsAre(unable_to_resolve_line("localhost:54320", WSAHOST_NOT_FOUND),
                                         unable_to_resolve_line("localhost:54321", WSAHOST_NOT_FOUND)));
}

TEST(winsock_resolver, reports_that_it_found_nothing) {
    scripted_winsock calls;
    calls.resolve_to_nothing();
    const log_capture log;
    EXPECT_EQ(resolve_address("localhost", "54320").status, socket_status::os_error);
    EXPECT_THAT(log.lines(), ElementsAre("WARNING unable to find a valid address for 'localhost:54320'"));
}

TEST(winsock_close, leaves_the_invalid_handle_and_handle_0_alone) {
    const scripted_winsock calls;
    socket_handle handle = 0;
    close_socket(handle);
    EXPECT_EQ(handle, invalid_socket);
    close_socket(handle);
    EXPECT_EQ(calls.count(winsock_call::close), 0);
}

} // namespace
} // namespace orvanta_tests
