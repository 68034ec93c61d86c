// Waiting on several sockets.
#include "network/loopback.hpp"
#include "support/library_sockets.hpp"
#include "support/log_capture.hpp"
#include "support/system_calls.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"

#include <cerrno>
#include <gmock/gmock.h>
#include <limits>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta;
using testing::ElementsAre;
using testing::IsEmpty;

class wait_for_several : public loopback_test {
  protected:
    bool wait(std::int64_t timeout_ns) {
        const socket_handle sockets[] = {first.handle(), invalid_socket, second.handle()};
        return wait_for_packets(sockets, platform::steady_now_ns() + timeout_ns);
    }

    loopback_socket first{GetParam()};
    loopback_socket second{GetParam()};
    loopback_socket peer{GetParam()};
};
INSTANTIATE_TEST_SUITE_P(families, wait_for_several, testing::ValuesIn(loopback_hosts()), family_name);

TEST_P(wait_for_several, ends_with_a_datagram_on_any_of_them) {
    for (const loopback_socket* receiver : {&first, &second}) {
        peer.send_raw({1}, *receiver);
        EXPECT_TRUE(wait(patience_ns));
        buffered_record record;
        EXPECT_EQ(recv_packet(receiver->handle(), record), socket_status::ok);
    }
}

TEST_P(wait_for_several, ends_with_a_datagram_that_comes_later) {
    scripted_calls calls;
    calls.before(system_call::ppoll, 1, [this] { peer.send_raw({1}, second); });
    EXPECT_TRUE(wait(patience_ns));
}

TEST_P(wait_for_several, ends_with_a_refusal_that_recv_packet_then_reports) {
    provoke_refusal(first, GetParam());
    EXPECT_TRUE(wait(patience_ns));
    buffered_record record;
    EXPECT_EQ(recv_packet(first.handle(), record), socket_status::connection_reset);
    EXPECT_FALSE(wait(0));
}

TEST_P(wait_for_several, does_not_end_again_for_a_refusal_that_a_send_has_met) {
    provoke_refusal(first, GetParam());
    auto packet = buffer_of({1});
    ASSERT_EQ(send_packet(first.handle(), packet, peer.address()), socket_status::ok);
    EXPECT_FALSE(wait(0));
}

TEST_P(wait_for_several, ends_at_its_deadline) {
    const std::int64_t before = platform::steady_now_ns();
    EXPECT_FALSE(wait(5 * ns_per_millisecond));
    EXPECT_GE(platform::steady_now_ns() - before, 5 * ns_per_millisecond);
}

TEST_P(wait_for_several, looks_once_when_its_deadline_has_passed) {
    const scripted_calls calls;
    EXPECT_FALSE(wait(-ns_per_millisecond));
    peer.send_raw({1}, first);
    ASSERT_TRUE(first.wait());
    EXPECT_TRUE(wait(-ns_per_millisecond));
    EXPECT_EQ(calls.poll_limits().front(), 0);
    EXPECT_EQ(calls.poll_limits().back(), 0);
}

TEST_P(wait_for_several, takes_a_deadline_at_the_end_of_time) {
    peer.send_raw({1}, first);
    const socket_handle sockets[] = {first.handle()};
    EXPECT_TRUE(wait_for_packets(sockets, std::numeric_limits<std::int64_t>::max()));
    EXPECT_TRUE(wait_for_packets(sockets, std::numeric_limits<std::int64_t>::min()));
}

TEST_P(wait_for_several, ends_early_and_quietly_with_a_signal) {
    const log_capture log;
    scripted_calls calls;
    calls.fail(system_call::ppoll, EINTR);
    EXPECT_FALSE(wait(patience_ns));
    EXPECT_EQ(calls.count(system_call::ppoll), 1);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_P(wait_for_several, logs_a_failure) {
    const log_capture log;
    scripted_calls calls;
    calls.fail(system_call::ppoll, ENOMEM);
    EXPECT_FALSE(wait(patience_ns));
    EXPECT_THAT(log.lines(),
                ElementsAre("WARNING message: unable to wait for packets with code: Cannot allocate memory"));
}

TEST(wait_for_none, sleeps_until_its_deadline) {
    const std::int64_t before = platform::steady_now_ns();
    const socket_handle sockets[] = {invalid_socket};
    EXPECT_FALSE(wait_for_packets(sockets, before + 2 * ns_per_millisecond));
    EXPECT_FALSE(wait_for_packets({}, before + 4 * ns_per_millisecond));
    EXPECT_GE(platform::steady_now_ns() - before, 4 * ns_per_millisecond);
}

} // namespace
} // namespace orvanta_tests
