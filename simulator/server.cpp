// The service core on its sockets.
#include "simulator/server.hpp"

#include "network/socket_wait.hpp"
#include "vantu/orvanta/common/utils/platform.hpp"

#include <algorithm>
#include <span>

namespace vantu::orvanta::simulator {
namespace {

// A signal that comes between the question and the sleep does not wake the sleep: it waits this long.
constexpr std::int64_t longest_sleep_ns = 200'000'000;

// Datagrams taken from one socket before it is the others' and the streams' turn.
constexpr int most_in_a_row = 64;

} // namespace

void server::serve(const std::function<bool()>& stop) {
    while (!stop()) {
        receive_waiting();
        const std::int64_t now = platform::steady_now_ns();
        core_.tick(now);
        send_outgoing();
        (void)wait_for_packets(sockets_.sockets(), std::min(core_.next_due_ns(), now + longest_sleep_ns));
    }
    core_.say_goodbye();
    send_outgoing();
}

void server::receive_waiting() {
    const auto sockets = sockets_.sockets();
    for (std::size_t listener = 0; listener < sockets.size(); ++listener) {
        for (int taken = 0; taken < most_in_a_row; ++taken) {
            record_.buffer.reset();
            const socket_status status = recv_packet(sockets[listener], record_);
            if (status == socket_status::would_block) {
                break;
            }
            if (status != socket_status::ok) {
                continue; // a client that has gone, or a datagram too large: the next may be good
            }
            const peer from{{record_.from_length, record_.from}, listener};
            core_.receive(from, {record_.buffer.unread(), record_.buffer.read_len()},
                          platform::steady_now_ns());
            send_outgoing();
        }
    }
}

// What the system has no room for is lost, as any datagram may be.
void server::send_outgoing() {
    for (outgoing_datagram& one : core_.take_outgoing()) {
        (void)send_packet(sockets_.sockets()[one.to.listener], one.bytes, one.to.address);
    }
}

} // namespace vantu::orvanta::simulator
