// Waiting for one socket, with wakes, by one event.
#include "network/winsock/loopback.hpp"
#include "support/library_sockets.hpp"

#include "network/socket_shared.hpp"
#include "network/socket_waiter.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"

#include <memory>
#include <thread>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta;
using status = socket_waiter::status;
using testing::ElementsAre;
using testing::IsEmpty;

class winsock_waiter : public testing::Test {
  protected:
    winsock_waiter() {
        waiter = socket_waiter::create(error);
        EXPECT_EQ(error, 0U);
        EXPECT_EQ(waiter->watch(socket.handle()), 0U);
    }

    status wait(std::int64_t timeout_ns) {
        return waiter->wait_until(platform::steady_now_ns() + timeout_ns).outcome;
    }
    [[nodiscard]] bool is_set() const {
        return WaitForSingleObject(reinterpret_cast<HANDLE>(waiter->handle()), 0) == WAIT_OBJECT_0;
    }
    static socket_status receive(const loopback_socket& from) {
        buffered_record record;
        return recv_packet(from.handle(), record);
    }

    loopback_socket socket;
    loopback_socket peer;
    std::uint32_t error{0};
    std::unique_ptr<socket_waiter> waiter;
    log_capture log;
    scripted_winsock calls;
};

TEST_F(winsock_waiter, is_ready_once_for_a_datagram) {
    peer.send_raw({1}, socket);
    EXPECT_EQ(wait(patience_ns), status::ready);
    EXPECT_EQ(receive(socket), socket_status::ok);
    EXPECT_EQ(receive(socket), socket_status::would_block);
    EXPECT_EQ(wait(0), status::timed_out);
}

TEST_F(winsock_waiter, sees_a_datagram_that_came_before_it) {
    peer.send_raw({1}, peer);
    ASSERT_TRUE(peer.wait());
    EXPECT_EQ(waiter->watch(peer.handle()), 0U);
    EXPECT_EQ(wait(patience_ns), status::ready);
}

TEST_F(winsock_waiter, sees_each_of_many_datagrams_when_all_are_taken_after_each_wait) {
    for (int i = 0; i < 200; ++i) {
        peer.send_raw({1}, socket);
        peer.send_raw({2}, socket);
        for (int taken = 0; taken < 2;) {
            ASSERT_EQ(wait(patience_ns), status::ready);
            while (receive(socket) == socket_status::ok) {
                ++taken;
            }
        }
    }
}

TEST_F(winsock_waiter, is_ready_again_when_a_datagram_was_left) {
    peer.send_raw({1}, socket);
    peer.send_raw({2}, socket);
    ASSERT_EQ(wait(patience_ns), status::ready);
    ASSERT_EQ(receive(socket), socket_status::ok);
    EXPECT_EQ(wait(patience_ns), status::ready);
    EXPECT_EQ(receive(socket), socket_status::ok);
}

TEST_F(winsock_waiter, ends_its_wait_with_a_datagram_that_comes_later) {
    calls.before(winsock_call::wait, 1, [this] { peer.send_raw({1}, socket); });
    EXPECT_EQ(wait(patience_ns), status::ready);
}

TEST_F(winsock_waiter, watches_no_socket_that_it_was_told_to_forget) {
    const loopback_socket next;
    waiter->forget(socket.handle());
    peer.send_raw({1}, socket);
    EXPECT_EQ(wait(5 * ns_per_millisecond), status::timed_out);
    EXPECT_EQ(waiter->watch(next.handle()), 0U);
    peer.send_raw({1}, next);
    EXPECT_EQ(wait(patience_ns), status::ready);
}

TEST_F(winsock_waiter, is_woken_once_for_wakes_before_a_wait) {
    waiter->wake();
    waiter->wake();
    EXPECT_EQ(wait(patience_ns), status::ready);
    EXPECT_EQ(wait(0), status::timed_out);
}

TEST_F(winsock_waiter, is_woken_by_another_thread) {
    std::thread other;
    calls.before(winsock_call::wait, 1, [&] { other = std::thread([this] { waiter->wake(); }); });
    EXPECT_EQ(wait(patience_ns), status::ready);
    other.join();
}

TEST_F(winsock_waiter, sets_its_event_for_wakes_and_leaves_it_to_who_waits) {
    waiter->wake();
    waiter->clear_wakes();
    EXPECT_TRUE(is_set());
    EXPECT_FALSE(is_set()) << "the wait has reset it";
}

TEST_F(winsock_waiter, ends_at_its_deadline) {
    const std::int64_t before = platform::steady_now_ns();
    EXPECT_EQ(wait(5 * ns_per_millisecond), status::timed_out);
    EXPECT_GE(platform::steady_now_ns() - before, 5 * ns_per_millisecond);
    EXPECT_EQ(wait(-ns_per_millisecond), status::timed_out);
    waiter->wake();
    EXPECT_EQ(waiter->wait_until(latest_ns).outcome, status::ready);
}

TEST_F(winsock_waiter, tells_the_errors_of_the_system) {
    calls.fail(winsock_call::event_select, WSAENETDOWN);
    EXPECT_EQ(waiter->watch(socket.handle()), std::uint32_t{WSAENETDOWN});
    calls.fail(winsock_call::wait, ERROR_INVALID_HANDLE);
    const socket_waiter::result result = waiter->wait_until(latest_ns);
    EXPECT_EQ(result.outcome, status::failed);
    EXPECT_EQ(result.system_error, std::uint32_t{ERROR_INVALID_HANDLE});
    EXPECT_THAT(log.lines(), IsEmpty());
    log_wait_failure(WSAENETDOWN);
    EXPECT_THAT(log.lines(), ElementsAre("WARNING message: unable to wait for packets with code: " +
                                         socket_shared::error_text(WSAENETDOWN)));
}

TEST_F(winsock_waiter, is_not_made_without_an_event) {
    calls.fail(winsock_call::create_event, ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(socket_waiter::create(error), nullptr);
    EXPECT_EQ(error, std::uint32_t{ERROR_NOT_ENOUGH_MEMORY});
}

TEST_F(winsock_waiter, leaves_no_handle) {
    EXPECT_EQ(handles_left_by([this] { (void)socket_waiter::create(error); }), 0);
}

} // namespace
} // namespace orvanta_tests
