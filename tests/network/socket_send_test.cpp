// Sending one datagram.
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

class socket_send : public loopback_test {};
INSTANTIATE_TEST_SUITE_P(families, socket_send, testing::ValuesIn(loopback_hosts()), family_name);

TEST_P(socket_send, delivers_the_unread_bytes_and_consumes_them) {
    const loopback_socket sender(GetParam());
    const loopback_socket receiver(GetParam());
    auto packet = buffer_of({1, 2, 3, 4, 5});
    packet.skip_read(2);
    EXPECT_EQ(send_packet(sender.handle(), packet, receiver.address()), socket_status::ok);
    EXPECT_EQ(packet.read_len(), 0U);
    ASSERT_TRUE(receiver.wait());
    buffered_record record;
    ASSERT_EQ(recv_packet(receiver.handle(), record), socket_status::ok);
    EXPECT_THAT(unread_bytes(record.buffer), ElementsAre(3, 4, 5));
}

TEST_P(socket_send, is_one_system_call) {
    const loopback_socket sender(GetParam());
    const loopback_socket receiver(GetParam());
    auto packet = buffer_of({1});
    const scripted_calls calls;
    EXPECT_EQ(send_packet(sender.handle(), packet, receiver.address()), socket_status::ok);
    EXPECT_EQ(calls.count(system_call::sendto), 1);
    EXPECT_EQ(calls.count(system_call::recvmsg), 0);
}

TEST_P(socket_send, delivers_an_empty_datagram) {
    const loopback_socket sender(GetParam());
    const loopback_socket receiver(GetParam());
    auto packet = buffer_of({});
    EXPECT_EQ(send_packet(sender.handle(), packet, receiver.address()), socket_status::ok);
    ASSERT_TRUE(receiver.wait());
    buffered_record record;
    EXPECT_EQ(recv_packet(receiver.handle(), record), socket_status::ok);
    EXPECT_EQ(record.buffer.read_len(), 0U);
}

TEST_P(socket_send, delivers_a_datagram_although_an_earlier_one_was_refused) {
    const loopback_socket sender(GetParam());
    const loopback_socket receiver(GetParam());
    provoke_refusal(sender, GetParam());
    auto packet = buffer_of({7, 8});
    const log_capture log;
    const scripted_calls calls;
    EXPECT_EQ(send_packet(sender.handle(), packet, receiver.address()), socket_status::ok);
    EXPECT_EQ(calls.count(system_call::sendto), 2);
    EXPECT_EQ(packet.read_len(), 0U);
    ASSERT_TRUE(receiver.wait());
    buffered_record record;
    ASSERT_EQ(recv_packet(receiver.handle(), record), socket_status::ok);
    EXPECT_THAT(unread_bytes(record.buffer), ElementsAre(7, 8));
    EXPECT_EQ(recv_packet(receiver.handle(), record), socket_status::would_block);
    EXPECT_EQ(sender.state(), 0);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_P(socket_send, takes_any_error_that_the_queue_holds_for_an_earlier_datagrams) {
    const loopback_socket sender(GetParam());
    const loopback_socket receiver(GetParam());
    provoke_refusal(sender, GetParam());
    auto packet = buffer_of({9});
    scripted_calls calls;
    calls.fail(system_call::sendto, EHOSTUNREACH);
    EXPECT_EQ(send_packet(sender.handle(), packet, receiver.address()), socket_status::ok);
    EXPECT_TRUE(receiver.wait());
}

// One socket, one receiver, and a datagram between them whose sending is made to fail.
class socket_send_failure : public testing::Test {
  protected:
    socket_status send() { return send_packet(sender.handle(), packet, receiver.address()); }

    loopback_socket sender{"127.0.0.1"};
    loopback_socket receiver{"127.0.0.1"};
    byte_buffer packet{buffer_of({1, 2, 3})};
    log_capture log;
    scripted_calls calls;
};

TEST_F(socket_send_failure, without_room_is_would_block_and_consumes_nothing) {
    calls.fail(system_call::sendto, EAGAIN);
    EXPECT_EQ(send(), socket_status::would_block);
    EXPECT_EQ(packet.read_len(), 3U);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(socket_send_failure, for_a_refused_family_is_unavailable) {
    calls.fail(system_call::sendto, EAFNOSUPPORT);
    EXPECT_EQ(send(), socket_status::unavailable);
    EXPECT_EQ(packet.read_len(), 3U);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(socket_send_failure, for_a_refused_address_is_unavailable) {
    calls.fail(system_call::sendto, EADDRINUSE);
    EXPECT_EQ(send(), socket_status::unavailable);
    EXPECT_EQ(packet.read_len(), 3U);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(socket_send_failure, to_the_other_family_is_unavailable) {
    const auto other = resolve_address("::1", "54320");
    ASSERT_EQ(other.status, socket_status::ok);
    EXPECT_EQ(send_packet(sender.handle(), packet, other.address), socket_status::unavailable);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(socket_send_failure, of_any_other_kind_is_logged_once) {
    calls.fail(system_call::sendto, ENOBUFS);
    EXPECT_EQ(send(), socket_status::os_error);
    EXPECT_EQ(packet.read_len(), 3U);
    EXPECT_THAT(log.lines(), ElementsAre("WARNING message: unable to send packet with code: "
                                         "No buffer space available"));
    EXPECT_EQ(calls.count(system_call::sendto), 1);
    EXPECT_THAT(log.entries().front().path, testing::EndsWith("/socket_posix.cpp"));
}

TEST_F(socket_send_failure, with_a_number_unknown_to_the_system_is_logged_as_unknown) {
    calls.fail(system_call::sendto, 4095);
    EXPECT_EQ(send(), socket_status::os_error);
    EXPECT_THAT(log.lines(), ElementsAre("WARNING message: unable to send packet with code: unknown"));
}

TEST_F(socket_send_failure, by_a_signal_is_tried_again) {
    calls.fail(system_call::sendto, EINTR, 1, 2);
    EXPECT_EQ(send(), socket_status::ok);
    EXPECT_EQ(calls.count(system_call::sendto), 3);
    EXPECT_TRUE(receiver.wait());
}

TEST_F(socket_send_failure, that_never_ends_is_given_up) {
    calls.fail(system_call::sendto, ECONNREFUSED, 1, scripted_calls::always);
    EXPECT_EQ(send(), socket_status::os_error);
    EXPECT_EQ(calls.count(system_call::sendto), 8);
    EXPECT_THAT(log.lines(),
                ElementsAre("WARNING message: unable to send packet with code: Connection refused"));
}

TEST_F(socket_send_failure, is_tried_again_although_the_error_queue_cannot_be_read) {
    calls.fail(system_call::sendto, ECONNREFUSED).fail(system_call::recvmsg, EIO);
    EXPECT_EQ(send(), socket_status::ok);
    EXPECT_TRUE(receiver.wait());
}

TEST_F(socket_send_failure, of_a_closed_socket_is_logged) {
    EXPECT_EQ(send_packet(invalid_socket, packet, receiver.address()), socket_status::os_error);
    EXPECT_THAT(log.lines(),
                ElementsAre("WARNING message: unable to send packet with code: Bad file descriptor"));
}

} // namespace
} // namespace orvanta_tests
