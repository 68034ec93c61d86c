#include "simulator/sockets/server.hpp"

#include "network/socket.hpp"

#include <algorithm>
#include <span>
#include <stdexcept>
#include <utility>

namespace vantu::orvanta::simulator {
namespace {

// Datagrams taken from one socket before it is the others' and the streams' turn.
constexpr std::size_t most_in_a_row = 64;

// A step of catching up: its datagrams go out before the next step.
constexpr std::int64_t step_ns = 10'000'000;
constexpr std::int64_t longest_catching_up_ns = 20'000'000;

} // namespace

clock_function make_steady_clock(const simulation& timed, clock_function source) {
    constexpr std::int64_t longest_lag_ns = 500'000'000;
    const std::int64_t begin = source() - timed.now_ns();
    return [&timed, source = std::move(source), start = begin]() mutable {
        const std::int64_t current = source();
        start = std::max(start, current - timed.now_ns() - longest_lag_ns);
        return current - start;
    };
}

server::server(simulation& target, const listeners& sockets, clock_function clock)
    : server(target, sockets, std::move(clock),
             [&target](std::int64_t since_start_ns) { target.advance_to(since_start_ns); }) {}

server::server(simulation& target, const listeners& sockets, clock_function clock,
               advance_function advance_to)
    : target_(target), sockets_(sockets), clock_(std::move(clock)), advance_to_(std::move(advance_to)) {}

std::size_t server::serve_waiting() {
    std::size_t taken = 0;
    for (std::size_t listener = 0; listener < sockets_.sockets().size(); ++listener) {
        taken += receive_waiting(listener);
    }
    (void)catch_up();
    return taken;
}

bool server::catch_up() {
    const std::int64_t end_ns = clock_();
    std::int64_t reached_ns = target_.now_ns();
    do {
        reached_ns = std::min(reached_ns + step_ns, end_ns);
        advance_to_(reached_ns);
        send_outgoing();
    } while (reached_ns < end_ns && clock_() - end_ns < longest_catching_up_ns);
    return reached_ns == end_ns;
}

std::size_t server::receive_waiting(std::size_t listener) {
    const socket_handle socket = sockets_.sockets()[listener];
    std::size_t taken = 0;
    bool in_time = true;
    for (std::size_t looks = 0; looks < most_in_a_row && in_time; ++looks) {
        record_.buffer.reset();
        const socket_status status = recv_packet(socket, record_);
        if (status == socket_status::would_block) {
            break;
        }
        if (status != socket_status::ok) {
            continue; // a client that has gone, or a datagram too large: the next may be good
        }
        ++taken;
        in_time = catch_up();
        const peer from{{record_.from_length, record_.from}, listener};
        const std::span<const std::byte> bytes(record_.buffer.unread(), record_.buffer.read_len());
        if (told_) {
            told_({communication::direction::to_service, from, socket, bytes});
        }
        target_.receive(from, bytes);
        send_outgoing();
    }
    return taken;
}

// A datagram that the system has no room for is lost, as any datagram may be.
void server::send_outgoing() {
    for (const departure& one : target_.take_outgoing()) {
        const socket_handle socket = socket_for(one);
        if (socket != invalid_socket && send_bytes(socket, one.bytes, one.to.address) == socket_status::ok &&
            told_) {
            told_({communication::direction::to_client, one.to, socket, one.bytes});
        }
    }
}

socket_handle server::socket_for(const departure& one) {
    try {
        if (one.forged && !forgers_) {
            forgers_.emplace("0");
        }
    } catch (const std::runtime_error&) {
        return invalid_socket;
    }
    const auto sockets = (one.forged ? *forgers_ : sockets_).sockets();
    return one.to.listener < sockets.size() ? sockets[one.to.listener] : invalid_socket;
}

} // namespace vantu::orvanta::simulator
