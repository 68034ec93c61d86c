// The receive with a time-out.
#include "network/loopback.hpp"
#include "network/socket_shared.hpp"
#include "support/library_sockets.hpp"
#include "support/log_capture.hpp"
#include "support/system_calls.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <gmock/gmock.h>
#include <limits>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta;
using testing::AllOf;
using testing::Each;
using testing::ElementsAre;
using testing::Ge;
using testing::IsEmpty;
using testing::Le;

constexpr std::int64_t no_limit = -1;

class overlapped_receive : public loopback_test {
  protected:
    void arm() { ASSERT_EQ(recv_packet_overlapped(socket.handle(), record), socket_status::ok); }
    socket_status wait(std::int64_t timeout_ns) {
        const std::int64_t before = platform::steady_now_ns();
        const socket_status status = get_overlapped_result(socket.handle(), record, timeout_ns);
        elapsed_ns = platform::steady_now_ns() - before;
        return status;
    }
    void send(const std::vector<std::uint8_t>& bytes) { peer.send_raw(bytes, socket); }

    loopback_socket socket{GetParam()};
    loopback_socket peer{GetParam()};
    buffered_record record;
    std::int64_t elapsed_ns{0};
};
INSTANTIATE_TEST_SUITE_P(families, overlapped_receive, testing::ValuesIn(loopback_hosts()), family_name);

TEST_P(overlapped_receive, is_armed_with_all_the_room_and_a_blank_record) {
    record.buffer.read_position = 10;
    record.buffer.write_position = 30;
    record.from_length = 5;
    record.received = 6;
    record.flags = 7;
    record.overlapped = {1, 2, 3, &record};
    arm();
    EXPECT_EQ(record.buffer.read_position, 0U);
    EXPECT_EQ(record.buffer.write_position, 20U);
    EXPECT_EQ(record.wsabuf.length, 2028U);
    EXPECT_EQ(record.wsabuf.data, record.buffer.bytes + 20);
    EXPECT_EQ(record.from_length, 128);
    EXPECT_EQ(record.received, 0U);
    EXPECT_EQ(record.flags, 0U);
    EXPECT_EQ(record.overlapped.internal, 0U);
    EXPECT_EQ(record.overlapped.internal_high, 0U);
    EXPECT_EQ(record.overlapped.offset, 0U);
    EXPECT_EQ(record.overlapped.event, nullptr);
}

TEST_P(overlapped_receive, takes_a_datagram_that_waited_before_it_was_armed) {
    send({1, 2});
    ASSERT_TRUE(socket.wait());
    arm();
    EXPECT_EQ(record.buffer.read_len(), 0U);
    ASSERT_EQ(wait(patience_ns), socket_status::ok);
    EXPECT_THAT(unread_bytes(record.buffer), ElementsAre(1, 2));
    EXPECT_EQ(record.received, 2U);
    EXPECT_EQ(stringify_addr({record.from_length, record.from}), stringify_socket(peer.handle()));
}

TEST_P(overlapped_receive, takes_a_datagram_that_comes_during_the_wait) {
    arm();
    scripted_calls calls;
    calls.before(system_call::ppoll, 1, [this] { send({3}); });
    ASSERT_EQ(wait(patience_ns), socket_status::ok);
    EXPECT_THAT(unread_bytes(record.buffer), ElementsAre(3));
}

TEST_P(overlapped_receive, appends_after_what_is_unread) {
    record.buffer.bytes[0] = std::byte{9};
    record.buffer.write_position = 1;
    send({4});
    arm();
    ASSERT_EQ(wait(patience_ns), socket_status::ok);
    EXPECT_THAT(unread_bytes(record.buffer), ElementsAre(9, 4));
    EXPECT_EQ(record.received, 1U);
}

TEST_P(overlapped_receive, waits_without_limit_for_0_ns) {
    arm();
    scripted_calls calls;
    calls.before(system_call::ppoll, 1, [this] { send({5}); });
    ASSERT_EQ(wait(0), socket_status::ok);
    EXPECT_THAT(calls.poll_limits(), ElementsAre(no_limit));
}

TEST_P(overlapped_receive, looks_once_for_less_than_a_millisecond) {
    const log_capture log;
    arm();
    const scripted_calls calls;
    EXPECT_EQ(wait(999'999), socket_status::would_block);
    EXPECT_EQ(wait(1), socket_status::would_block);
    EXPECT_EQ(calls.count(system_call::ppoll), 0);
    EXPECT_EQ(calls.count(system_call::recvfrom), 2);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_P(overlapped_receive, takes_what_a_single_look_finds) {
    send({6});
    ASSERT_TRUE(socket.wait());
    arm();
    EXPECT_EQ(wait(999'999), socket_status::ok);
}

TEST_P(overlapped_receive, looks_once_for_a_time_in_the_past) {
    arm();
    EXPECT_EQ(wait(-5'000'000), socket_status::would_block);
    EXPECT_EQ(wait(std::numeric_limits<std::int64_t>::min()), socket_status::would_block);
}

TEST_P(overlapped_receive, waits_one_millisecond_for_one_and_a_half) {
    const log_capture log;
    arm();
    const scripted_calls calls;
    EXPECT_EQ(wait(1'500'000), socket_status::timeout);
    EXPECT_GE(elapsed_ns, ns_per_millisecond);
    EXPECT_THAT(calls.poll_limits(), Each(AllOf(Ge(0), Le(ns_per_millisecond))));
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_P(overlapped_receive, clamps_a_time_that_the_clock_cannot_count) {
    arm();
    scripted_calls calls;
    calls.before(system_call::ppoll, 1, [this] { send({7}); });
    EXPECT_EQ(wait(std::numeric_limits<std::int64_t>::max()), socket_status::ok);
    EXPECT_THAT(calls.poll_limits(), Each(Ge(1'000'000'000 * ns_per_millisecond)));
}

TEST_P(overlapped_receive, keeps_its_deadline_through_signals) {
    arm();
    scripted_calls calls;
    calls.fail(system_call::ppoll, EINTR, 1, 3);
    EXPECT_EQ(wait(20 * ns_per_millisecond), socket_status::timeout);
    EXPECT_GE(elapsed_ns, 20 * ns_per_millisecond);
    EXPECT_GE(calls.count(system_call::ppoll), 4);
    const auto limits = calls.poll_limits();
    EXPECT_THAT(limits, Each(Le(20 * ns_per_millisecond)));
    EXPECT_TRUE(std::is_sorted(limits.rbegin(), limits.rend())) << "each wait is for the rest alone";
}

TEST_P(overlapped_receive, runs_its_whole_time_although_an_earlier_datagram_was_refused) {
    const log_capture log;
    provoke_refusal(socket, GetParam());
    arm();
    const scripted_calls calls;
    EXPECT_EQ(wait(30 * ns_per_millisecond), socket_status::timeout);
    EXPECT_GE(elapsed_ns, 30 * ns_per_millisecond);
    EXPECT_LE(calls.count(system_call::recvfrom), 10) << "the wait spins";
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_P(overlapped_receive, runs_its_whole_time_although_a_datagram_is_refused_during_the_wait) {
    const log_capture log;
    arm();
    scripted_calls calls;
    calls.before(system_call::ppoll, 1, [this] { provoke_refusal(socket, GetParam()); });
    EXPECT_EQ(wait(30 * ns_per_millisecond), socket_status::timeout);
    EXPECT_GE(elapsed_ns, 30 * ns_per_millisecond);
    EXPECT_LE(calls.count(system_call::recvfrom), 10) << "the wait spins";
    EXPECT_EQ(socket.state(), 0);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_P(overlapped_receive, takes_the_datagram_that_follows_a_refusal) {
    arm();
    scripted_calls calls;
    calls.before(system_call::recvfrom, 1, [this] {
        provoke_refusal(socket, GetParam());
        send({8});
    });
    EXPECT_EQ(wait(patience_ns), socket_status::ok);
    EXPECT_THAT(unread_bytes(record.buffer), ElementsAre(8));
}

TEST_P(overlapped_receive, is_not_refused_by_a_single_look) {
    arm();
    scripted_calls calls;
    calls.before(system_call::recvfrom, 1, [this] { provoke_refusal(socket, GetParam()); });
    EXPECT_EQ(wait(1), socket_status::would_block);
    EXPECT_EQ(socket.state(), 0);
}

TEST_P(overlapped_receive, drops_a_datagram_larger_than_the_room) {
    const log_capture log;
    send(std::vector<std::uint8_t>(2049, 1));
    arm();
    EXPECT_EQ(wait(patience_ns), socket_status::os_error);
    EXPECT_EQ(record.buffer.read_len(), 0U);
    EXPECT_EQ(record.dropped.length, 2048U);
    EXPECT_EQ(record.dropped.whole, 2049U);
    EXPECT_THAT(
        log.lines(),
        ElementsAre("WARNING message: unable to get overlapped IO result with code: Message too long"));
}

TEST_P(overlapped_receive, logs_a_failed_receive) {
    const log_capture log;
    arm();
    scripted_calls calls;
    calls.fail(system_call::recvfrom, EIO);
    EXPECT_EQ(wait(patience_ns), socket_status::os_error);
    EXPECT_THAT(log.lines(), ElementsAre("WARNING message: unable to get overlapped IO result with code: "
                                         "Input/output error"));
}

TEST_P(overlapped_receive, logs_a_failed_wait) {
    const log_capture log;
    arm();
    scripted_calls calls;
    calls.fail(system_call::ppoll, ENOMEM);
    EXPECT_EQ(wait(patience_ns), socket_status::os_error);
    EXPECT_THAT(log.lines(), ElementsAre("WARNING message: unable to get overlapped IO result with code: "
                                         "Cannot allocate memory"));
}

TEST_P(overlapped_receive, fails_when_the_error_queue_cannot_be_read) {
    const log_capture log;
    const std::string line =
        "WARNING message: unable to get overlapped IO result with code: Input/output error";
    arm();
    {
        scripted_calls calls;
        calls.before(system_call::recvfrom, 1, [&] { provoke_refusal(socket, GetParam()); });
        calls.fail(system_call::recvmsg, EIO);
        EXPECT_EQ(wait(patience_ns), socket_status::os_error);
    }
    {
        scripted_calls calls;
        calls.fail(system_call::recvfrom, EAGAIN, 1, 1).before(system_call::recvfrom, 1, [&] {
            provoke_refusal(socket, GetParam());
        });
        calls.fail(system_call::recvmsg, EIO);
        EXPECT_EQ(wait(patience_ns), socket_status::os_error);
    }
    EXPECT_THAT(log.lines(), ElementsAre(line, line));
}

TEST_P(overlapped_receive, cannot_be_armed_on_a_closed_socket) {
    const log_capture log;
    EXPECT_EQ(recv_packet_overlapped(invalid_socket, record), socket_status::os_error);
    EXPECT_THAT(log.lines(),
                ElementsAre("WARNING message: unable to recv packet with code: Bad file descriptor"));
}

TEST_P(overlapped_receive, fails_on_a_socket_that_was_closed_meanwhile) {
    const log_capture log;
    arm();
    socket.close();
    EXPECT_EQ(wait(patience_ns), socket_status::os_error);
    EXPECT_THAT(log.lines(), ElementsAre("WARNING message: unable to get overlapped IO result with code: "
                                         "Bad file descriptor"));
}

TEST(overlapped_limit, drops_what_is_less_than_a_millisecond) {
    using socket_shared::wait_limit_of;
    constexpr std::int64_t now = 7'000'000'123;
    EXPECT_EQ(wait_limit_of(999'999, now).deadline_ns, now);
    EXPECT_EQ(wait_limit_of(1'000'000, now).deadline_ns, now + 1'000'000);
    EXPECT_EQ(wait_limit_of(1'500'000, now).deadline_ns, now + 1'000'000);
    EXPECT_EQ(wait_limit_of(1'999'999, now).deadline_ns, now + 1'000'000);
    EXPECT_EQ(wait_limit_of(-7'000'000, now).deadline_ns, now);
    EXPECT_EQ(wait_limit_of(latest_ns, now).deadline_ns, latest_ns);
    for (const std::int64_t single_look : {std::int64_t{1}, std::int64_t{999'999}, std::int64_t{-1}}) {
        EXPECT_TRUE(wait_limit_of(single_look, now).single_look);
        EXPECT_FALSE(wait_limit_of(single_look, now).without_end);
    }
    EXPECT_FALSE(wait_limit_of(1'000'000, now).single_look);
    EXPECT_FALSE(wait_limit_of(1'000'000, now).without_end);
    EXPECT_TRUE(wait_limit_of(0, now).without_end);
    EXPECT_FALSE(wait_limit_of(0, now).single_look);
}

} // namespace
} // namespace orvanta_tests
