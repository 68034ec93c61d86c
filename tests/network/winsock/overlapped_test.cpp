// The overlapped receive: its outcomes, the news of closed ports, and the record that comes back.
#include "network/winsock/loopback.hpp"
#include "support/library_sockets.hpp"

#include "network/socket_shared.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"

#include <limits>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Le;

std::string result_line(std::uint32_t error) {
    return "WARNING message: unable to get overlapped IO result with code: " +
           socket_shared::error_text(error);
}

class winsock_overlapped : public testing::Test {
  protected:
    void send(const std::vector<std::uint8_t>& bytes) { peer.send_raw(bytes, socket); }
    void arm() { ASSERT_EQ(recv_packet_overlapped(socket.handle(), record), socket_status::ok); }
    socket_status wait(std::int64_t timeout_ns) {
        const std::int64_t before = platform::steady_now_ns();
        const socket_status status = get_overlapped_result(socket.handle(), record, timeout_ns);
        elapsed_ns = platform::steady_now_ns() - before;
        return status;
    }

    loopback_socket socket;
    loopback_socket peer;
    buffered_record record;
    std::int64_t elapsed_ns{0};
    log_capture log;
    scripted_winsock calls;
};

TEST_F(winsock_overlapped, takes_what_was_there_before) {
    send({1, 2});
    ASSERT_TRUE(socket.wait());
    arm();
    EXPECT_EQ(wait(patience_ns), socket_status::ok);
    EXPECT_THAT(unread_bytes(record.buffer), ElementsAre(1, 2));
    EXPECT_EQ(record.received, 2U);
    EXPECT_EQ(stringify_addr({record.from_length, record.from}), stringify_socket(peer.handle()));
}

TEST_F(winsock_overlapped, takes_what_comes_during_the_wait) {
    arm();
    calls.before(winsock_call::get_result, 1, [this] { send({3}); });
    EXPECT_EQ(wait(patience_ns), socket_status::ok);
    EXPECT_THAT(unread_bytes(record.buffer), ElementsAre(3));
}

TEST_F(winsock_overlapped, appends_after_what_is_unread) {
    record.buffer.bytes[10] = std::byte{9};
    record.buffer.read_position = 10;
    record.buffer.write_position = 11;
    arm();
    EXPECT_EQ(record.wsabuf.length, 2047U);
    send({4});
    ASSERT_EQ(wait(patience_ns), socket_status::ok);
    EXPECT_THAT(unread_bytes(record.buffer), ElementsAre(9, 4));
}

TEST_F(winsock_overlapped, waits_without_limit_for_0_ns) {
    arm();
    calls.before(winsock_call::get_result, 1, [this] { send({5}); });
    ASSERT_EQ(wait(0), socket_status::ok);
    EXPECT_THAT(calls.result_limits(), ElementsAre(scripted_winsock::no_limit));
}

TEST_F(winsock_overlapped, looks_once_for_less_than_a_millisecond_and_can_look_again) {
    arm();
    EXPECT_EQ(wait(999'999), socket_status::would_block);
    EXPECT_EQ(calls.result_limits().front(), 0U);
    EXPECT_EQ(wait(-5'000'000), socket_status::would_block);
    EXPECT_EQ(wait(std::numeric_limits<std::int64_t>::min()), socket_status::would_block);
    send({6});
    ASSERT_TRUE(socket.wait());
    EXPECT_EQ(wait(1), socket_status::ok);
    EXPECT_THAT(unread_bytes(record.buffer), ElementsAre(6));
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(winsock_overlapped, takes_a_datagram_that_comes_after_a_single_look) {
    arm();
    calls.before(winsock_call::cancel, 1, [this] { send({7}); });
    const socket_status status = wait(1);
    if (status == socket_status::would_block) {
        EXPECT_EQ(wait(patience_ns), socket_status::ok) << "nothing is lost";
    } else {
        EXPECT_EQ(status, socket_status::ok);
    }
    EXPECT_THAT(unread_bytes(record.buffer), ElementsAre(7));
}

TEST_F(winsock_overlapped, waits_one_millisecond_for_one_and_a_half) {
    arm();
    EXPECT_EQ(wait(1'500'000), socket_status::timeout);
    EXPECT_GE(elapsed_ns, ns_per_millisecond);
    EXPECT_EQ(calls.result_limits().front(), 1U);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(winsock_overlapped, waits_again_when_the_systems_longest_wait_is_shorter_than_the_time) {
    arm();
    calls.fail(winsock_call::get_result, WAIT_TIMEOUT, 1, 2);
    calls.before(winsock_call::get_result, 3, [this] { send({8}); });
    EXPECT_EQ(wait(std::numeric_limits<std::int64_t>::max()), socket_status::ok);
    EXPECT_THAT(calls.result_limits(), Each(scripted_winsock::no_limit - 1));
    EXPECT_EQ(calls.count(winsock_call::cancel), 0);
}

TEST_F(winsock_overlapped, that_timed_out_has_its_record_back_and_leaves_the_next_datagram) {
    arm();
    EXPECT_EQ(wait(2 * ns_per_millisecond), socket_status::timeout);
    EXPECT_EQ(calls.count(winsock_call::cancel), 1);
    record.buffer.bytes[0] = std::byte{0xA5};
    send({9});
    ASSERT_TRUE(socket.wait());
    EXPECT_EQ(record.buffer.bytes[0], std::byte{0xA5})
        << "the system wrote into a record that it had given back";
    EXPECT_EQ(recv_packet(socket.handle(), record), socket_status::ok);
    EXPECT_THAT(unread_bytes(record.buffer), ElementsAre(9));
}

TEST_F(winsock_overlapped, is_a_time_out_also_when_the_cancellation_loses_against_a_datagram) {
    arm();
    // The receive completes with the datagram before the cancellation, which then finds nothing.
    calls.before(winsock_call::cancel, 1, [this] {
        send({10});
        OVERLAPPED& state = *reinterpret_cast<OVERLAPPED*>(&record.overlapped);
        while (!HasOverlappedIoCompleted(&state)) {
            SwitchToThread();
        }
    });
    EXPECT_EQ(wait(2 * ns_per_millisecond), socket_status::timeout);
    EXPECT_EQ(record.buffer.read_len(), 0U);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(winsock_overlapped, starts_although_an_earlier_datagram_met_a_closed_port) {
    calls.fail(winsock_call::start_receive, WSAECONNRESET);
    arm();
    EXPECT_EQ(calls.count(winsock_call::start_receive), 2);
    send({11});
    EXPECT_EQ(wait(patience_ns), socket_status::ok);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(winsock_overlapped, is_connection_reset_when_the_reports_of_closed_ports_never_end) {
    calls.fail(winsock_call::start_receive, WSAECONNRESET, 1, scripted_winsock::always);
    EXPECT_EQ(recv_packet_overlapped(socket.handle(), record), socket_status::connection_reset);
    EXPECT_EQ(calls.count(winsock_call::start_receive), 8);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(winsock_overlapped, runs_its_whole_time_although_the_port_is_reported_closed_during_the_wait) {
    for (const long error :
         {ERROR_PORT_UNREACHABLE, ERROR_NETNAME_DELETED, ERROR_CONNECTION_REFUSED, long{WSAECONNRESET}}) {
        arm();
        calls.fail(winsock_call::get_result, static_cast<int>(error));
        const int before = calls.count(winsock_call::start_receive);
        EXPECT_EQ(wait(20 * ns_per_millisecond), socket_status::timeout) << error;
        EXPECT_GE(elapsed_ns, 20 * ns_per_millisecond);
        EXPECT_EQ(calls.count(winsock_call::start_receive), before + 1)
            << "the receive was started again once";
    }
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(winsock_overlapped, takes_the_datagram_that_follows_the_report_of_a_closed_port) {
    arm();
    calls.fail(winsock_call::get_result, ERROR_PORT_UNREACHABLE);
    calls.before(winsock_call::start_receive, 1, [this] { send({12}); });
    EXPECT_EQ(wait(patience_ns), socket_status::ok);
    EXPECT_THAT(unread_bytes(record.buffer), ElementsAre(12));
}

TEST_F(winsock_overlapped, that_cannot_be_started_again_is_logged) {
    arm();
    calls.fail(winsock_call::get_result, ERROR_PORT_UNREACHABLE);
    calls.fail(winsock_call::start_receive, WSAENOBUFS);
    EXPECT_EQ(wait(patience_ns), socket_status::os_error);
    EXPECT_THAT(log.lines(), ElementsAre(result_line(WSAENOBUFS)));
}

TEST_F(winsock_overlapped, drops_a_datagram_larger_than_the_room) {
    arm();
    calls.before(winsock_call::get_result, 1, [this] { send(std::vector<std::uint8_t>(2049, 1)); });
    EXPECT_EQ(wait(patience_ns), socket_status::os_error);
    EXPECT_EQ(record.buffer.read_len(), 0U);
    EXPECT_EQ(record.dropped.length, 2048U);
    EXPECT_EQ(record.dropped.whole, 0U);
    EXPECT_EQ(record.buffer.unwritten()[2047], std::byte{1});
    EXPECT_THAT(log.lines(), ElementsAre(testing::StartsWith(result_line(0x2FFFFFFF).substr(0, 60))));
    send({13});
    arm();
    EXPECT_EQ(wait(patience_ns), socket_status::ok);
    EXPECT_THAT(unread_bytes(record.buffer), ElementsAre(13));
}

TEST_F(winsock_overlapped, whose_result_cannot_be_had_is_logged_and_gives_the_record_back) {
    arm();
    calls.fail(winsock_call::get_result, ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(wait(patience_ns), socket_status::os_error);
    EXPECT_EQ(calls.count(winsock_call::cancel), 1);
    EXPECT_THAT(log.lines(), ElementsAre(result_line(ERROR_NOT_ENOUGH_MEMORY)));
}

TEST_F(winsock_overlapped, cannot_be_started_on_a_closed_socket) {
    EXPECT_EQ(recv_packet_overlapped(invalid_socket, record), socket_status::os_error);
    EXPECT_THAT(log.lines(), ElementsAre("WARNING message: unable to recv packet with code: " +
                                         socket_shared::error_text(WSAENOTSOCK)));
}

} // namespace
} // namespace orvanta_tests
