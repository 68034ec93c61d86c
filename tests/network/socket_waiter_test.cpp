// Waiting for one socket, with wakes, by one descriptor.
#include "network/loopback.hpp"
#include "network/socket_waiter.hpp"
#include "support/library_sockets.hpp"
#include "support/log_capture.hpp"
#include "support/system_calls.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"

#include <cerrno>
#include <gmock/gmock.h>
#include <memory>
#include <poll.h>
#include <thread>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta;
using status = socket_waiter::status;
using testing::ElementsAre;
using testing::IsEmpty;

std::unique_ptr<socket_waiter> make_waiter() {
    std::uint32_t error = 0;
    std::unique_ptr<socket_waiter> waiter = socket_waiter::create(error);
    EXPECT_NE(waiter, nullptr);
    EXPECT_EQ(error, 0U);
    return waiter;
}

class a_socket_waiter : public loopback_test {
  protected:
    a_socket_waiter() { EXPECT_EQ(waiter->watch(socket.handle()), 0U); }

    status wait(std::int64_t timeout_ns) {
        return waiter->wait_until(platform::steady_now_ns() + timeout_ns).outcome;
    }
    [[nodiscard]] bool is_readable() const {
        pollfd entry{static_cast<int>(waiter->handle()), POLLIN, 0};
        return poll(&entry, 1, 0) == 1 && entry.revents == POLLIN;
    }
    static socket_status receive(const loopback_socket& from) {
        buffered_record record;
        return recv_packet(from.handle(), record);
    }

    loopback_socket socket{GetParam()};
    loopback_socket peer{GetParam()};
    std::unique_ptr<socket_waiter> waiter{make_waiter()};
};
INSTANTIATE_TEST_SUITE_P(families, a_socket_waiter, testing::ValuesIn(loopback_hosts()), family_name);

TEST_P(a_socket_waiter, is_ready_while_a_datagram_waits) {
    EXPECT_FALSE(is_readable());
    peer.send_raw({1}, socket);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(wait(patience_ns), status::ready);
        EXPECT_TRUE(is_readable());
    }
    EXPECT_EQ(receive(socket), socket_status::ok);
    EXPECT_FALSE(is_readable());
    EXPECT_EQ(wait(0), status::timed_out);
}

TEST_P(a_socket_waiter, sees_a_datagram_that_came_before_it) {
    peer.send_raw({1}, socket);
    ASSERT_TRUE(socket.wait());
    const auto later = make_waiter();
    EXPECT_EQ(later->watch(socket.handle()), 0U);
    EXPECT_EQ(later->wait_until(platform::steady_now_ns()).outcome, status::ready);
}

TEST_P(a_socket_waiter, ends_its_wait_with_a_datagram_that_comes_later) {
    scripted_calls calls;
    calls.before(system_call::ppoll, 1, [this] { peer.send_raw({1}, socket); });
    EXPECT_EQ(wait(patience_ns), status::ready);
}

TEST_P(a_socket_waiter, is_ready_for_a_refusal_until_it_was_received) {
    provoke_refusal(socket, GetParam());
    EXPECT_EQ(wait(patience_ns), status::ready);
    EXPECT_EQ(receive(socket), socket_status::connection_reset);
    EXPECT_FALSE(is_readable());
    EXPECT_EQ(wait(0), status::timed_out);
}

TEST_P(a_socket_waiter, is_not_ready_for_a_refusal_that_a_send_has_met) {
    provoke_refusal(socket, GetParam());
    auto packet = buffer_of({1});
    ASSERT_EQ(send_packet(socket.handle(), packet, peer.address()), socket_status::ok);
    EXPECT_EQ(wait(0), status::timed_out);
}

TEST_P(a_socket_waiter, watches_no_socket_that_it_was_told_to_forget) {
    loopback_socket next{GetParam()};
    const std::intptr_t handle = waiter->handle();
    waiter->forget(socket.handle());
    peer.send_raw({1}, socket);
    ASSERT_TRUE(socket.wait());
    EXPECT_EQ(wait(0), status::timed_out);
    EXPECT_EQ(waiter->watch(next.handle()), 0U);
    peer.send_raw({1}, next);
    EXPECT_EQ(wait(patience_ns), status::ready);
    EXPECT_EQ(waiter->handle(), handle);
}

TEST_P(a_socket_waiter, is_woken_once_for_wakes_before_a_wait) {
    waiter->wake();
    waiter->wake();
    EXPECT_TRUE(is_readable());
    EXPECT_EQ(wait(patience_ns), status::ready);
    EXPECT_FALSE(is_readable());
    EXPECT_EQ(wait(0), status::timed_out);
}

TEST_P(a_socket_waiter, is_woken_by_another_thread) {
    scripted_calls calls;
    std::thread other;
    calls.before(system_call::ppoll, 1, [&] { other = std::thread([this] { waiter->wake(); }); });
    EXPECT_EQ(wait(patience_ns), status::ready);
    other.join();
}

TEST_P(a_socket_waiter, forgets_wakes_that_are_taken_back) {
    waiter->wake();
    waiter->wake();
    waiter->clear_wakes();
    EXPECT_FALSE(is_readable());
    EXPECT_EQ(wait(0), status::timed_out);
    waiter->clear_wakes();
    waiter->wake();
    EXPECT_EQ(wait(0), status::ready);
}

TEST_P(a_socket_waiter, keeps_a_wake_that_comes_after_the_end_of_its_time) {
    scripted_calls calls;
    calls.before(system_call::ppoll, 1, [this] { waiter->wake(); });
    calls.end_with(system_call::ppoll, 0);
    EXPECT_EQ(wait(0), status::timed_out);
    EXPECT_EQ(wait(0), status::ready);
}

TEST_P(a_socket_waiter, ends_at_its_deadline) {
    const std::int64_t before = platform::steady_now_ns();
    EXPECT_EQ(wait(5 * ns_per_millisecond), status::timed_out);
    EXPECT_GE(platform::steady_now_ns() - before, 5 * ns_per_millisecond);
}

TEST_P(a_socket_waiter, looks_once_after_its_deadline_and_without_limit_at_the_end_of_time) {
    const scripted_calls calls;
    EXPECT_EQ(wait(-ns_per_millisecond), status::timed_out);
    waiter->wake();
    EXPECT_EQ(waiter->wait_until(latest_ns).outcome, status::ready);
    EXPECT_THAT(calls.poll_limits(), ElementsAre(0, -1));
}

TEST_P(a_socket_waiter, ends_early_and_quietly_with_a_signal) {
    const log_capture log;
    scripted_calls calls;
    calls.fail(system_call::ppoll, EINTR);
    EXPECT_EQ(wait(patience_ns), status::ready);
    EXPECT_EQ(calls.count(system_call::ppoll), 1);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_P(a_socket_waiter, tells_the_error_of_a_refused_wait_and_keeps_the_wake) {
    const log_capture log;
    scripted_calls calls;
    calls.fail(system_call::ppoll, ENOMEM);
    waiter->wake();
    const socket_waiter::result result = waiter->wait_until(latest_ns);
    EXPECT_EQ(result.outcome, status::failed);
    EXPECT_EQ(result.system_error, std::uint32_t{ENOMEM});
    EXPECT_THAT(log.lines(), IsEmpty());
    EXPECT_EQ(wait(0), status::ready);
}

TEST_P(a_socket_waiter, tells_the_error_of_a_socket_that_it_cannot_watch) {
    scripted_calls calls;
    calls.fail(system_call::epoll_ctl, ENOSPC);
    EXPECT_EQ(waiter->watch(peer.handle()), std::uint32_t{ENOSPC});
    EXPECT_EQ(waiter->watch(peer.handle()), 0U);
}

TEST(a_new_socket_waiter, is_refused_with_the_error_of_each_call_and_leaves_no_descriptor) {
    for (const auto& [call, error] :
         {std::pair(system_call::epoll_create1, EMFILE), std::pair(system_call::eventfd, ENFILE),
          std::pair(system_call::epoll_ctl, ENOSPC)}) {
        const auto before = open_descriptors();
        scripted_calls calls;
        calls.fail(call, error);
        std::uint32_t told = 0;
        EXPECT_EQ(socket_waiter::create(told), nullptr);
        EXPECT_EQ(told, static_cast<std::uint32_t>(error));
        EXPECT_EQ(open_descriptors(), before);
    }
}

TEST(a_socket_waiter_that_is_gone, leaves_no_descriptor) {
    const auto before = open_descriptors();
    (void)make_waiter();
    EXPECT_EQ(open_descriptors(), before);
}

TEST(a_failed_wait, has_a_line_in_the_log) {
    const log_capture log;
    log_wait_failure(ENOMEM);
    EXPECT_THAT(log.lines(),
                ElementsAre("WARNING message: unable to wait for packets with code: Cannot allocate memory"));
}

} // namespace
} // namespace orvanta_tests
