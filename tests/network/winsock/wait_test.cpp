// Waiting on several sockets by Winsock's events.
#include "network/winsock/loopback.hpp"
#include "support/library_sockets.hpp"

#include "network/socket_shared.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"

#include <limits>
#include <thread>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta;
using testing::ElementsAre;
using testing::IsEmpty;

class winsock_wait : public testing::Test {
  protected:
    bool wait(std::int64_t timeout_ns) {
        const socket_handle sockets[] = {first.handle(), invalid_socket, second.handle()};
        return wait_for_packets(sockets, platform::steady_now_ns() + timeout_ns);
    }

    loopback_socket first;
    loopback_socket second;
    loopback_socket peer;
    log_capture log;
    scripted_winsock calls;
};

TEST_F(winsock_wait, ends_with_a_datagram_on_any_of_them) {
    for (const loopback_socket* receiver : {&first, &second}) {
        peer.send_raw({1}, *receiver);
        EXPECT_TRUE(wait(patience_ns));
        EXPECT_TRUE(wait(patience_ns)) << "it still waits there";
        buffered_record record;
        EXPECT_EQ(recv_packet(receiver->handle(), record), socket_status::ok);
        EXPECT_FALSE(wait(0));
    }
}

TEST_F(winsock_wait, ends_with_a_datagram_that_comes_later) {
    calls.before(winsock_call::wait, 1, [this] { peer.send_raw({1}, second); });
    EXPECT_TRUE(wait(patience_ns));
}

TEST_F(winsock_wait, sees_each_of_many_datagrams) {
    for (int i = 0; i < 200; ++i) {
        peer.send_raw({1}, first);
        peer.send_raw({2}, first);
        for (int taken = 0; taken < 2; ++taken) {
            ASSERT_TRUE(wait(patience_ns));
            buffered_record record;
            ASSERT_EQ(recv_packet(first.handle(), record), socket_status::ok);
        }
    }
    EXPECT_FALSE(wait(0));
}

TEST_F(winsock_wait, ends_at_its_deadline_and_leaves_the_sockets_as_they_were) {
    const std::int64_t before = platform::steady_now_ns();
    EXPECT_FALSE(wait(5 * ns_per_millisecond));
    EXPECT_GE(platform::steady_now_ns() - before, 5 * ns_per_millisecond);
    buffered_record record;
    EXPECT_EQ(recv_packet(first.handle(), record), socket_status::would_block);
}

TEST_F(winsock_wait, looks_once_when_its_deadline_has_passed) {
    EXPECT_FALSE(wait(-ns_per_millisecond));
    peer.send_raw({1}, first);
    ASSERT_TRUE(first.wait());
    EXPECT_TRUE(wait(-ns_per_millisecond));
    const socket_handle sockets[] = {first.handle()};
    EXPECT_TRUE(wait_for_packets(sockets, std::numeric_limits<std::int64_t>::max()));
    EXPECT_TRUE(wait_for_packets(sockets, std::numeric_limits<std::int64_t>::min()));
}

TEST_F(winsock_wait, logs_a_failure) {
    calls.fail(winsock_call::event_select, WSAENETDOWN);
    EXPECT_FALSE(wait(patience_ns));
    calls.fail(winsock_call::wait, ERROR_INVALID_HANDLE);
    EXPECT_FALSE(wait(patience_ns));
    const std::string head = "WARNING message: unable to wait for packets with code: ";
    EXPECT_THAT(log.lines(), ElementsAre(head + socket_shared::error_text(WSAENETDOWN),
                                         head + socket_shared::error_text(ERROR_INVALID_HANDLE)));
}

TEST_F(winsock_wait, keeps_no_handle_of_a_thread_that_has_ended) {
    EXPECT_EQ(handles_left_by([this] { std::thread([this] { (void)wait(0); }).join(); }), 0);
}

TEST_F(winsock_wait, sleeps_until_its_deadline_without_sockets) {
    const std::int64_t before = platform::steady_now_ns();
    const socket_handle sockets[] = {invalid_socket};
    EXPECT_FALSE(wait_for_packets(sockets, before + 2 * ns_per_millisecond));
    EXPECT_FALSE(wait_for_packets({}, before + 4 * ns_per_millisecond));
    EXPECT_GE(platform::steady_now_ns() - before, 4 * ns_per_millisecond);
}

} // namespace
} // namespace orvanta_tests
