// Resolving, opening, binding and closing.
#include "network/loopback.hpp"
#include "support/log_capture.hpp"
#include "support/system_calls.hpp"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <netdb.h>
#include <netinet/in.h>
#include <unistd.h>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta;
using testing::ElementsAre;
using testing::IsEmpty;

int receive_buffer_size(int descriptor) {
    int size = 0;
    socklen_t length = sizeof size;
    EXPECT_EQ(getsockopt(descriptor, SOL_SOCKET, SO_RCVBUF, &size, &length), 0);
    return size;
}

class socket_open : public loopback_test {};
INSTANTIATE_TEST_SUITE_P(families, socket_open, testing::ValuesIn(loopback_hosts()), family_name);

TEST_P(socket_open, gives_a_non_blocking_socket_that_children_do_not_inherit) {
    const log_capture log;
    auto opened = open_bound_socket(GetParam(), "0");
    ASSERT_EQ(opened.status, socket_status::ok);
    const int descriptor = static_cast<int>(opened.socket);
    EXPECT_NE(fcntl(descriptor, F_GETFL, 0L) & O_NONBLOCK, 0);
    EXPECT_NE(fcntl(descriptor, F_GETFD, 0L) & FD_CLOEXEC, 0);
    close_socket(opened.socket);
    EXPECT_EQ(opened.socket, invalid_socket);
    EXPECT_EQ(fcntl(descriptor, F_GETFD, 0L), -1);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_P(socket_open, asks_for_a_receive_buffer_of_a_mebibyte) {
    const loopback_socket socket(GetParam());
    const int plain = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const int mebibyte = 1 << 20;
    ASSERT_EQ(setsockopt(plain, SOL_SOCKET, SO_RCVBUF, &mebibyte, sizeof mebibyte), 0);
    EXPECT_EQ(receive_buffer_size(socket.descriptor()), receive_buffer_size(plain));
    close(plain);
}

TEST_P(socket_open, takes_a_socket_that_grants_no_option) {
    scripted_calls calls;
    calls.fail(system_call::setsockopt, ENOPROTOOPT, 1, scripted_calls::always);
    const log_capture log;
    auto opened = open_bound_socket(GetParam(), "0");
    EXPECT_EQ(opened.status, socket_status::ok);
    EXPECT_THAT(log.lines(), IsEmpty());
    EXPECT_EQ(calls.count(system_call::setsockopt), 3);
    close_socket(opened.socket);
}

TEST_P(socket_open, reports_a_port_that_is_taken) {
    const loopback_socket holder(GetParam());
    const auto before = open_descriptors();
    const scripted_calls calls;
    const log_capture log;
    const auto opened = open_bound_socket(GetParam(), holder.port());
    EXPECT_EQ(opened.status, socket_status::unavailable);
    EXPECT_EQ(opened.socket, invalid_socket);
    EXPECT_THAT(log.lines(),
                ElementsAre("WARNING no valid interface to bind '" + GetParam() + ":" + holder.port() + "'"));
    EXPECT_EQ(calls.count(system_call::freeaddrinfo), 1);
    EXPECT_EQ(open_descriptors(), before);
}

TEST_P(socket_open, resolves_a_numeric_address) {
    const auto found = resolve_address(GetParam(), "54321");
    ASSERT_EQ(found.status, socket_status::ok);
    const bool is_ipv4 = GetParam() == "127.0.0.1";
    EXPECT_EQ(found.address.length,
              static_cast<std::int32_t>(is_ipv4 ? sizeof(sockaddr_in) : sizeof(sockaddr_in6)));
    // The port stands in network order after the family: 54321 is 0xD431.
    EXPECT_EQ(found.address.address.bytes[2], std::byte{0xD4});
    EXPECT_EQ(found.address.address.bytes[3], std::byte{0x31});
}

TEST(socket_startup, leaves_the_sockets_ready) {
    const log_capture log;
    socket_startup();
    auto opened = open_bound_socket("127.0.0.1", "0");
    EXPECT_EQ(opened.status, socket_status::ok);
    close_socket(opened.socket);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST(socket_walk, closes_every_socket_that_cannot_be_bound) {
    const loopback_socket first("127.0.0.1");
    const loopback_socket second("127.0.0.2", first.port());
    const auto before = open_descriptors();
    scripted_calls calls;
    calls.resolve_to({"127.0.0.1", "127.0.0.2"});
    const log_capture log;
    const auto opened = open_bound_socket("somewhere", first.port());
    EXPECT_EQ(opened.status, socket_status::unavailable);
    EXPECT_THAT(log.lines(),
                ElementsAre("WARNING no valid interface to bind 'somewhere:" + first.port() + "'"));
    EXPECT_EQ(calls.count(system_call::socket), 2);
    EXPECT_EQ(calls.count(system_call::bind), 2);
    EXPECT_EQ(calls.count(system_call::close), 2);
    EXPECT_EQ(open_descriptors(), before);
}

TEST(socket_walk, takes_the_next_address_when_the_first_is_taken) {
    const loopback_socket first("127.0.0.1");
    scripted_calls calls;
    calls.resolve_to({"127.0.0.1", "127.0.0.2"});
    const log_capture log;
    auto opened = open_bound_socket("somewhere", first.port());
    ASSERT_EQ(opened.status, socket_status::ok);
    EXPECT_EQ(stringify_socket(opened.socket), "127.0.0.2:" + first.port() + '\0');
    EXPECT_THAT(log.lines(), IsEmpty());
    close_socket(opened.socket);
}

TEST(socket_walk, stops_at_the_first_address_that_can_be_bound) {
    scripted_calls calls;
    calls.resolve_to({"127.0.0.1", "127.0.0.2"});
    auto opened = open_bound_socket("somewhere", "0");
    ASSERT_EQ(opened.status, socket_status::ok);
    EXPECT_EQ(calls.count(system_call::socket), 1);
    EXPECT_EQ(calls.count(system_call::freeaddrinfo), 1);
    close_socket(opened.socket);
}

TEST(socket_walk, passes_over_an_address_for_which_there_is_no_socket) {
    scripted_calls calls;
    calls.resolve_to({"127.0.0.1", "127.0.0.2"}).fail(system_call::socket, EMFILE);
    const log_capture log;
    auto opened = open_bound_socket("somewhere", "0");
    ASSERT_EQ(opened.status, socket_status::ok);
    EXPECT_THAT(stringify_socket(opened.socket), testing::StartsWith("127.0.0.2:"));
    EXPECT_THAT(log.lines(), IsEmpty());
    close_socket(opened.socket);
}

TEST(socket_walk, is_unavailable_when_no_address_has_a_socket) {
    scripted_calls calls;
    calls.fail(system_call::socket, EMFILE, 1, scripted_calls::always);
    const log_capture log;
    EXPECT_EQ(open_bound_socket("127.0.0.1", "54321").status, socket_status::unavailable);
    EXPECT_THAT(log.lines(), ElementsAre("WARNING no valid interface to bind '127.0.0.1:54321'"));
    EXPECT_EQ(calls.count(system_call::close), 0);
    EXPECT_EQ(calls.count(system_call::freeaddrinfo), 1);
}

TEST(socket_walk, is_unavailable_when_the_resolver_finds_nothing) {
    scripted_calls calls;
    calls.resolve_to_nothing();
    const log_capture log;
    EXPECT_EQ(open_bound_socket("127.0.0.1", "54321").status, socket_status::unavailable);
    EXPECT_THAT(log.lines(), ElementsAre("WARNING no valid interface to bind '127.0.0.1:54321'"));
}

TEST(socket_walk, closes_the_socket_whose_bind_fails) {
    const auto before = open_descriptors();
    scripted_calls calls;
    calls.fail(system_call::bind, EACCES);
    const log_capture log;
    EXPECT_EQ(open_bound_socket("127.0.0.1", "54321").status, socket_status::unavailable);
    EXPECT_EQ(open_descriptors(), before);
}

TEST(socket_walk, gives_up_and_keeps_the_socket_that_cannot_be_made_non_blocking) {
    const auto before = open_descriptors();
    scripted_calls calls;
    calls.resolve_to({"127.0.0.1", "127.0.0.2"}).fail(system_call::ioctl, ENOTTY);
    const log_capture log;
    const auto opened = open_bound_socket("127.0.0.1", "0");
    EXPECT_EQ(opened.status, socket_status::os_error);
    EXPECT_EQ(opened.socket, invalid_socket);
    EXPECT_THAT(log.lines(), ElementsAre("WARNING message: unable to ioctl non-block the socket with code: "
                                         "Inappropriate ioctl for device"));
    EXPECT_EQ(calls.count(system_call::socket), 1);
    EXPECT_EQ(calls.count(system_call::freeaddrinfo), 1);
    EXPECT_EQ(calls.count(system_call::close), 0);
    std::vector<int> left_open;
    for (const int descriptor : open_descriptors()) {
        if (!before.contains(descriptor)) {
            left_open.push_back(descriptor);
        }
    }
    ASSERT_EQ(left_open.size(), 1U);
    close(left_open.front());
}

// While one lives, standard input is closed and its number is free.
class closed_standard_input {
  public:
    closed_standard_input() : saved_(dup(STDIN_FILENO)) { close(STDIN_FILENO); }
    ~closed_standard_input() {
        dup2(saved_, STDIN_FILENO);
        close(saved_);
    }
    closed_standard_input(const closed_standard_input&) = delete;
    closed_standard_input& operator=(const closed_standard_input&) = delete;

  private:
    int saved_;
};

TEST(socket_numbers, are_never_those_of_the_standard_streams) {
    const closed_standard_input no_input;
    auto opened = open_bound_socket("127.0.0.1", "0");
    ASSERT_EQ(opened.status, socket_status::ok);
    EXPECT_GE(opened.socket, 3U);
    EXPECT_FALSE(open_descriptors().contains(STDIN_FILENO));
    EXPECT_NE(fcntl(static_cast<int>(opened.socket), F_GETFD, 0L) & FD_CLOEXEC, 0);
    close_socket(opened.socket);
}

TEST(socket_numbers, that_cannot_be_moved_up_count_as_no_socket) {
    const closed_standard_input no_input;
    const auto before = open_descriptors();
    scripted_calls calls;
    calls.fail(system_call::fcntl, EMFILE);
    const log_capture log;
    EXPECT_EQ(open_bound_socket("127.0.0.1", "54321").status, socket_status::unavailable);
    EXPECT_THAT(log.lines(), ElementsAre("WARNING no valid interface to bind '127.0.0.1:54321'"));
    EXPECT_EQ(open_descriptors(), before);
}

TEST(socket_resolver, takes_the_first_of_several_addresses) {
    scripted_calls calls;
    calls.resolve_to({"127.0.0.2", "127.0.0.1"});
    const auto found = resolve_address("somewhere", "54320");
    ASSERT_EQ(found.status, socket_status::ok);
    EXPECT_EQ(stringify_addr(found.address), "127.0.0.2:54320" + std::string(1, '\0'));
    EXPECT_EQ(calls.count(system_call::freeaddrinfo), 0);
}

// The numbers of AI_PASSIVE, a datagram socket and UDP are the same on both systems.
TEST(socket_resolver, is_asked_for_addresses_to_bind_datagram_sockets_to) {
    const scripted_calls calls;
    auto opened = open_bound_socket("127.0.0.1", "0");
    close_socket(opened.socket);
    EXPECT_EQ(calls.hints(), (resolver_hints{.flags = 1, .family = 0, .type = 2, .protocol = 17}));
}

TEST(socket_resolver, is_asked_for_any_address_of_the_service_that_speaks_udp) {
    const scripted_calls calls;
    EXPECT_EQ(resolve_address("127.0.0.1", "54320").status, socket_status::ok);
    EXPECT_EQ(calls.hints(), (resolver_hints{.flags = 0, .family = 0, .type = 0, .protocol = 17}));
}

TEST(socket_resolver, reports_its_failure_with_its_own_text) {
    const log_capture log;
    EXPECT_EQ(resolve_address("127.0.0.1", "no-such-port").status, socket_status::os_error);
    EXPECT_EQ(open_bound_socket("127.0.0.1", "no-such-port").status, socket_status::os_error);
    const std::string line =
        "WARNING message: unable to getaddrinfo for '127.0.0.1:no-such-port' with code: " +
        std::string(gai_strerror(EAI_SERVICE));
    EXPECT_THAT(log.lines(), ElementsAre(line, line));
}

TEST(socket_resolver, reports_the_systems_text_where_the_system_failed) {
    scripted_calls calls;
    calls.end_with(system_call::getaddrinfo, EAI_SYSTEM, ENFILE);
    const log_capture log;
    EXPECT_EQ(resolve_address("localhost", "54320").status, socket_status::os_error);
    calls.end_with(system_call::getaddrinfo, EAI_SYSTEM, ENFILE);
    const auto opened = open_bound_socket("localhost", "54321");
    EXPECT_EQ(opened.status, socket_status::os_error);
    EXPECT_EQ(opened.socket, invalid_socket);
    EXPECT_THAT(log.lines(), ElementsAre("WARNING message: unable to getaddrinfo for 'localhost:54320' with "
                                         "code: Too many open files in system",
                                         "WARNING message: unable to getaddrinfo for 'localhost:54321' with "
                                         "code: Too many open files in system"));
}

TEST(socket_resolver, reports_that_it_found_nothing) {
    scripted_calls calls;
    calls.resolve_to_nothing();
    const log_capture log;
    EXPECT_EQ(resolve_address("localhost", "54320").status, socket_status::os_error);
    EXPECT_THAT(log.lines(), ElementsAre("WARNING unable to find a valid address for 'localhost:54320'"));
}

TEST(socket_close, leaves_the_invalid_handle_and_handle_0_alone) {
    const scripted_calls calls;
    socket_handle handle = 0;
    close_socket(handle);
    EXPECT_EQ(handle, invalid_socket);
    close_socket(handle);
    EXPECT_EQ(handle, invalid_socket);
    EXPECT_EQ(calls.count(system_call::close), 0);
}

TEST(socket_close, forgets_the_handle_also_when_the_system_refuses) {
    auto opened = open_bound_socket("127.0.0.1", "0");
    const int descriptor = static_cast<int>(opened.socket);
    {
        scripted_calls calls;
        calls.fail(system_call::close, EIO);
        const log_capture log;
        close_socket(opened.socket);
        EXPECT_EQ(calls.count(system_call::close), 1);
        EXPECT_THAT(log.lines(), IsEmpty());
    }
    EXPECT_EQ(opened.socket, invalid_socket);
    close(descriptor);
}

} // namespace
} // namespace orvanta_tests
