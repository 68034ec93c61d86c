// The non-blocking receive.
#include "network/loopback.hpp"
#include "support/library_sockets.hpp"
#include "support/log_capture.hpp"
#include "support/system_calls.hpp"

#include <cerrno>
#include <gmock/gmock.h>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* too_long = "WARNING message: unable to recv packet with code: Message too long";

class socket_receive : public loopback_test {
  protected:
    void deliver(const std::vector<std::uint8_t>& bytes) {
        peer.send_raw(bytes, socket);
        ASSERT_TRUE(socket.wait());
    }
    socket_status receive() { return recv_packet(socket.handle(), record); }

    // The buffer as a datagram of 30 bytes leaves it of which 10 were read.
    void leave_20_bytes_unread() {
        for (std::uint8_t i = 0; i < 30; ++i) {
            record.buffer.bytes[i] = std::byte{i};
        }
        record.buffer.read_position = 10;
        record.buffer.write_position = 30;
    }

    loopback_socket socket{GetParam()};
    loopback_socket peer{GetParam()};
    buffered_record record;
};
INSTANTIATE_TEST_SUITE_P(families, socket_receive, testing::ValuesIn(loopback_hosts()), family_name);

TEST_P(socket_receive, with_nothing_waiting_would_block_and_logs_nothing) {
    const log_capture log;
    const scripted_calls calls;
    EXPECT_EQ(receive(), socket_status::would_block);
    EXPECT_EQ(record.from_length, 128);
    EXPECT_EQ(calls.count(system_call::recvfrom), 1);
    EXPECT_EQ(calls.count(system_call::recvmsg), 0);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_P(socket_receive, appends_the_datagram_and_names_its_sender) {
    deliver({10, 20, 30});
    const scripted_calls calls;
    ASSERT_EQ(receive(), socket_status::ok);
    EXPECT_THAT(unread_bytes(record.buffer), ElementsAre(10, 20, 30));
    EXPECT_EQ(record.from_length, peer.address().length);
    EXPECT_EQ(stringify_addr({record.from_length, record.from}), stringify_socket(peer.handle()));
    EXPECT_EQ(calls.count(system_call::recvfrom), 1);
    EXPECT_EQ(calls.count(system_call::recvmsg), 0);
    EXPECT_EQ(calls.count(system_call::ppoll), 0);
}

TEST_P(socket_receive, takes_an_empty_datagram) {
    deliver({});
    EXPECT_EQ(receive(), socket_status::ok);
    EXPECT_EQ(record.buffer.read_len(), 0U);
    EXPECT_EQ(receive(), socket_status::would_block);
}

TEST_P(socket_receive, moves_the_unread_bytes_to_the_front) {
    leave_20_bytes_unread();
    EXPECT_EQ(receive(), socket_status::would_block);
    EXPECT_EQ(record.buffer.read_position, 0U);
    EXPECT_EQ(record.buffer.write_position, 20U);
    EXPECT_EQ(record.buffer.bytes[0], std::byte{10});
    EXPECT_EQ(record.buffer.bytes[19], std::byte{29});
}

TEST_P(socket_receive, fills_all_the_room_after_the_unread_bytes) {
    leave_20_bytes_unread();
    deliver(std::vector<std::uint8_t>(2028, 0x5A));
    ASSERT_EQ(receive(), socket_status::ok);
    EXPECT_EQ(record.buffer.read_len(), 2048U);
    EXPECT_EQ(record.buffer.bytes[19], std::byte{29});
    EXPECT_EQ(record.buffer.bytes[20], std::byte{0x5A});
    EXPECT_EQ(record.buffer.bytes[2047], std::byte{0x5A});
}

TEST_P(socket_receive, drops_a_datagram_larger_than_the_room) {
    leave_20_bytes_unread();
    deliver(std::vector<std::uint8_t>(2029, 0x5A));
    deliver({77});
    const log_capture log;
    EXPECT_EQ(receive(), socket_status::os_error);
    EXPECT_THAT(log.lines(), ElementsAre(too_long));
    EXPECT_EQ(record.buffer.read_len(), 20U);
    EXPECT_EQ(record.buffer.bytes[0], std::byte{10});
    EXPECT_EQ(record.buffer.bytes[19], std::byte{29});
    EXPECT_EQ(record.dropped.length, 2028U);
    EXPECT_EQ(record.dropped.whole, 2029U);
    EXPECT_EQ(record.buffer.unwritten()[0], std::byte{0x5A});
    EXPECT_EQ(record.buffer.unwritten()[2027], std::byte{0x5A});
    ASSERT_EQ(receive(), socket_status::ok);
    EXPECT_EQ(record.dropped.length, 0U);
    EXPECT_EQ(record.buffer.read_len(), 21U);
    EXPECT_EQ(record.buffer.bytes[20], std::byte{77});
}

TEST_P(socket_receive, takes_2048_bytes_and_no_more) {
    deliver(std::vector<std::uint8_t>(2048, 1));
    deliver(std::vector<std::uint8_t>(2049, 2));
    ASSERT_EQ(receive(), socket_status::ok);
    EXPECT_EQ(record.buffer.read_len(), 2048U);
    record.buffer.reset();
    const log_capture log;
    EXPECT_EQ(receive(), socket_status::os_error);
    EXPECT_THAT(log.lines(), ElementsAre(too_long));
    EXPECT_EQ(record.buffer.read_len(), 0U);
}

TEST_P(socket_receive, drops_a_datagram_that_meets_a_full_buffer) {
    record.buffer.write_position = 2048;
    deliver({1});
    const log_capture log;
    EXPECT_EQ(receive(), socket_status::os_error);
    EXPECT_THAT(log.lines(), ElementsAre(too_long));
    EXPECT_EQ(record.buffer.read_len(), 2048U);
}

TEST_P(socket_receive, after_a_send_to_a_closed_port_is_connection_reset_once) {
    provoke_refusal(socket, GetParam());
    const log_capture log;
    EXPECT_EQ(receive(), socket_status::connection_reset);
    EXPECT_EQ(socket.state(), 0) << "a wait on this socket would spin";
    EXPECT_EQ(receive(), socket_status::would_block);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_P(socket_receive, reports_several_refusals_as_one_reset) {
    provoke_refusal(socket, GetParam());
    // Takes the pending error alone, so that the next refusal joins the first one in the queue.
    int error = 0;
    socklen_t length = sizeof error;
    ASSERT_EQ(getsockopt(socket.descriptor(), SOL_SOCKET, SO_ERROR, &error, &length), 0);
    ASSERT_EQ(error, ECONNREFUSED);
    provoke_refusal(socket, GetParam());
    EXPECT_EQ(receive(), socket_status::connection_reset);
    EXPECT_EQ(receive(), socket_status::would_block);
    EXPECT_EQ(socket.state(), 0);
}

TEST_P(socket_receive, keeps_what_waits_after_a_reset) {
    deliver({42});
    provoke_refusal(socket, GetParam());
    EXPECT_EQ(receive(), socket_status::connection_reset);
    ASSERT_EQ(receive(), socket_status::ok);
    EXPECT_THAT(unread_bytes(record.buffer), ElementsAre(42));
}

TEST_P(socket_receive, is_tried_again_after_a_signal) {
    deliver({1});
    scripted_calls calls;
    calls.fail(system_call::recvfrom, EINTR, 1, 2);
    EXPECT_EQ(receive(), socket_status::ok);
    EXPECT_EQ(calls.count(system_call::recvfrom), 3);
}

TEST_P(socket_receive, drains_the_error_queue_in_spite_of_signals) {
    provoke_refusal(socket, GetParam());
    scripted_calls calls;
    calls.fail(system_call::recvmsg, EINTR, 1, 2);
    EXPECT_EQ(receive(), socket_status::connection_reset);
    EXPECT_EQ(socket.state(), 0);
}

TEST_P(socket_receive, is_a_reset_also_when_the_error_queue_cannot_be_read) {
    provoke_refusal(socket, GetParam());
    const log_capture log;
    scripted_calls calls;
    calls.fail(system_call::recvmsg, EIO);
    EXPECT_EQ(receive(), socket_status::connection_reset);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_P(socket_receive, takes_a_reset_connection_for_a_reset) {
    scripted_calls calls;
    calls.fail(system_call::recvfrom, ECONNRESET);
    EXPECT_EQ(receive(), socket_status::connection_reset);
}

TEST_P(socket_receive, logs_any_other_failure) {
    leave_20_bytes_unread();
    const log_capture log;
    scripted_calls calls;
    calls.fail(system_call::recvfrom, EIO);
    EXPECT_EQ(receive(), socket_status::os_error);
    EXPECT_EQ(record.buffer.read_len(), 20U);
    EXPECT_THAT(log.lines(),
                ElementsAre("WARNING message: unable to recv packet with code: Input/output error"));
}

TEST_P(socket_receive, logs_a_closed_socket) {
    socket.close();
    const log_capture log;
    EXPECT_EQ(receive(), socket_status::os_error);
    EXPECT_THAT(log.lines(),
                ElementsAre("WARNING message: unable to recv packet with code: Bad file descriptor"));
}

} // namespace
} // namespace orvanta_tests
