// Sending one datagram and the non-blocking receive by Winsock.
#include "network/winsock/loopback.hpp"
#include "support/library_sockets.hpp"

#include "network/socket_shared.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"
#include "vantu/orvanta/common/platform.hpp"

#include <atomic>
#include <cstddef>
#include <thread>
#include <vector>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta;
using testing::ElementsAre;
using testing::IsEmpty;

std::string line_of(const std::string& operation, int error) {
    return "WARNING message: " + operation +
           " with code: " + socket_shared::error_text(static_cast<std::uint32_t>(error));
}

class winsock_send : public testing::Test {
  protected:
    socket_status send() { return send_packet(sender.handle(), packet, receiver.address()); }

    loopback_socket sender;
    loopback_socket receiver;
    byte_buffer packet{buffer_of({1, 2, 3})};
    log_capture log;
    scripted_winsock calls;
};

TEST_F(winsock_send, delivers_the_unread_bytes_in_one_call_and_consumes_them) {
    packet.skip_read(1);
    EXPECT_EQ(send(), socket_status::ok);
    EXPECT_EQ(packet.read_len(), 0U);
    EXPECT_EQ(calls.count(winsock_call::sendto), 1);
    ASSERT_TRUE(receiver.wait());
    buffered_record record;
    ASSERT_EQ(recv_packet(receiver.handle(), record), socket_status::ok);
    EXPECT_THAT(unread_bytes(record.buffer), ElementsAre(2, 3));
}

TEST_F(winsock_send, delivers_an_empty_datagram) {
    packet.skip_read(3);
    EXPECT_EQ(send(), socket_status::ok);
    ASSERT_TRUE(receiver.wait());
    buffered_record record;
    EXPECT_EQ(recv_packet(receiver.handle(), record), socket_status::ok);
    EXPECT_EQ(record.buffer.read_len(), 0U);
}

TEST_F(winsock_send, without_room_is_would_block_after_one_call_and_consumes_nothing) {
    calls.fail(winsock_call::sendto, WSAEWOULDBLOCK);
    EXPECT_EQ(send(), socket_status::would_block);
    EXPECT_EQ(calls.count(winsock_call::sendto), 1);
    EXPECT_EQ(packet.read_len(), 3U);
    EXPECT_THAT(log.lines(), IsEmpty());
}

// Threads that send on one socket without a pause; how many of their sends were not ok.
int refused_sends_of(int thread_count, const loopback_socket& from, const loopback_socket& to) {
    constexpr int sends_of_each = 1000;
    std::atomic<int> refused{0};
    std::atomic<int> missing{thread_count};
    std::vector<std::thread> threads;
    for (int i = 0; i < thread_count; ++i) {
        threads.emplace_back([&] {
            const std::byte bytes[32]{};
            for (--missing; missing > 0;) {
                std::this_thread::yield();
            }
            for (int sent = 0; sent < sends_of_each; ++sent) {
                refused += try_send(from.handle(), bytes, to.address()).status == socket_status::ok ? 0 : 1;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    return refused;
}

TEST(winsock_sends, of_several_threads_on_one_socket_all_go_out) {
    const loopback_socket sender;
    const loopback_socket receiver;
    EXPECT_EQ(refused_sends_of(2, sender, receiver), 0);
    EXPECT_EQ(refused_sends_of(8, sender, receiver), 0);
}

TEST(winsock_sends, on_one_socket_are_never_inside_the_system_together) {
    const loopback_socket sender;
    const loopback_socket receiver;
    const std::byte bytes[1]{};
    std::thread other;
    scripted_winsock calls;
    calls.before(winsock_call::sendto, 1, [&] {
        other = std::thread([&] {
            EXPECT_EQ(try_send(sender.handle(), bytes, receiver.address()).status, socket_status::ok);
        });
        platform::sleep_until_ns(platform::steady_now_ns() + 50 * ns_per_millisecond);
        EXPECT_EQ(calls.count(winsock_call::sendto), 1);
    });
    EXPECT_EQ(try_send(sender.handle(), bytes, receiver.address()).status, socket_status::ok);
    other.join();
    EXPECT_EQ(calls.count(winsock_call::sendto), 2);
}

TEST_F(winsock_send, for_a_refused_family_or_address_is_unavailable) {
    for (const int error : {WSAEAFNOSUPPORT, WSAEADDRINUSE}) {
        calls.fail(winsock_call::sendto, error);
        EXPECT_EQ(send(), socket_status::unavailable);
        EXPECT_EQ(packet.read_len(), 3U);
    }
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(winsock_send, goes_out_although_an_earlier_datagram_met_a_closed_port) {
    calls.fail(winsock_call::sendto, WSAECONNRESET);
    EXPECT_EQ(send(), socket_status::ok);
    EXPECT_EQ(calls.count(winsock_call::sendto), 2);
    EXPECT_TRUE(receiver.wait());
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(winsock_send, that_never_ends_is_given_up) {
    calls.fail(winsock_call::sendto, WSAECONNRESET, 1, scripted_winsock::always);
    EXPECT_EQ(send(), socket_status::os_error);
    EXPECT_EQ(calls.count(winsock_call::sendto), 8);
    EXPECT_THAT(log.lines(), ElementsAre(line_of("unable to send packet", WSAECONNRESET)));
}

TEST_F(winsock_send, that_fails_otherwise_is_logged_once) {
    calls.fail(winsock_call::sendto, WSAENOBUFS);
    EXPECT_EQ(send(), socket_status::os_error);
    EXPECT_EQ(packet.read_len(), 3U);
    EXPECT_EQ(calls.count(winsock_call::sendto), 1);
    EXPECT_THAT(log.lines(), ElementsAre(line_of("unable to send packet", WSAENOBUFS)));
    EXPECT_THAT(log.entries().front().path, testing::EndsWith("socket_winsock.cpp"));
}

TEST_F(winsock_send, on_a_closed_socket_is_logged) {
    EXPECT_EQ(send_packet(invalid_socket, packet, receiver.address()), socket_status::os_error);
    EXPECT_THAT(log.lines(), ElementsAre(line_of("unable to send packet", WSAENOTSOCK)));
}

class winsock_receive : public testing::Test {
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

    loopback_socket socket;
    loopback_socket peer;
    buffered_record record;
    log_capture log;
    scripted_winsock calls;
};

TEST_F(winsock_receive, with_nothing_waiting_would_block_and_logs_nothing) {
    EXPECT_EQ(receive(), socket_status::would_block);
    EXPECT_EQ(calls.count(winsock_call::recvfrom), 1);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(winsock_receive, appends_the_datagram_in_one_call_and_names_its_sender) {
    deliver({10, 20, 30});
    ASSERT_EQ(receive(), socket_status::ok);
    EXPECT_THAT(unread_bytes(record.buffer), ElementsAre(10, 20, 30));
    EXPECT_EQ(stringify_addr({record.from_length, record.from}), stringify_socket(peer.handle()));
    EXPECT_EQ(calls.count(winsock_call::recvfrom), 1);
}

TEST_F(winsock_receive, takes_an_empty_datagram) {
    deliver({});
    EXPECT_EQ(receive(), socket_status::ok);
    EXPECT_EQ(record.buffer.read_len(), 0U);
    EXPECT_EQ(receive(), socket_status::would_block);
}

TEST_F(winsock_receive, moves_the_unread_bytes_to_the_front_and_fills_the_room_after_them) {
    leave_20_bytes_unread();
    EXPECT_EQ(receive(), socket_status::would_block);
    EXPECT_EQ(record.buffer.read_position, 0U);
    EXPECT_EQ(record.buffer.write_position, 20U);
    deliver(std::vector<std::uint8_t>(2028, 0x5A));
    ASSERT_EQ(receive(), socket_status::ok);
    EXPECT_EQ(record.buffer.read_len(), 2048U);
    EXPECT_EQ(record.buffer.bytes[0], std::byte{10});
    EXPECT_EQ(record.buffer.bytes[19], std::byte{29});
    EXPECT_EQ(record.buffer.bytes[20], std::byte{0x5A});
    EXPECT_EQ(record.buffer.bytes[2047], std::byte{0x5A});
}

TEST_F(winsock_receive, drops_a_datagram_larger_than_the_room) {
    leave_20_bytes_unread();
    deliver(std::vector<std::uint8_t>(2029, 0x5A));
    deliver({77});
    EXPECT_EQ(receive(), socket_status::os_error);
    EXPECT_THAT(log.lines(), ElementsAre(line_of("unable to recv packet", WSAEMSGSIZE)));
    EXPECT_EQ(record.buffer.read_len(), 20U);
    EXPECT_EQ(record.buffer.bytes[19], std::byte{29});
    EXPECT_EQ(record.dropped.length, 2028U);
    EXPECT_EQ(record.dropped.whole, 0U);
    EXPECT_EQ(record.buffer.unwritten()[0], std::byte{0x5A});
    EXPECT_EQ(record.buffer.unwritten()[2027], std::byte{0x5A});
    ASSERT_EQ(receive(), socket_status::ok);
    EXPECT_EQ(record.dropped.length, 0U);
    EXPECT_EQ(record.buffer.read_len(), 21U);
    EXPECT_EQ(record.buffer.bytes[20], std::byte{77});
}

TEST_F(winsock_receive, takes_2048_bytes_and_no_more) {
    deliver(std::vector<std::uint8_t>(2048, 1));
    deliver(std::vector<std::uint8_t>(2049, 2));
    ASSERT_EQ(receive(), socket_status::ok);
    EXPECT_EQ(record.buffer.read_len(), 2048U);
    record.buffer.reset();
    EXPECT_EQ(receive(), socket_status::os_error);
    EXPECT_EQ(record.buffer.read_len(), 0U);
}

TEST_F(winsock_receive, after_a_send_to_a_closed_port_is_connection_reset_and_the_next_goes_on) {
    deliver({42});
    calls.fail(winsock_call::recvfrom, WSAECONNRESET);
    EXPECT_EQ(receive(), socket_status::connection_reset);
    ASSERT_EQ(receive(), socket_status::ok);
    EXPECT_THAT(unread_bytes(record.buffer), ElementsAre(42));
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(winsock_receive, logs_any_other_failure) {
    leave_20_bytes_unread();
    calls.fail(winsock_call::recvfrom, WSAENETDOWN);
    EXPECT_EQ(receive(), socket_status::os_error);
    EXPECT_EQ(record.buffer.read_len(), 20U);
    socket.close();
    EXPECT_EQ(receive(), socket_status::os_error);
    EXPECT_THAT(log.lines(), ElementsAre(line_of("unable to recv packet", WSAENETDOWN),
                                         line_of("unable to recv packet", WSAENOTSOCK)));
}

} // namespace
} // namespace orvanta_tests
