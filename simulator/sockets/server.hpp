// The simulation on its sockets: datagrams in, datagrams out.
#pragma once

#include "simulator/simulation/simulation.hpp"
#include "simulator/sockets/listeners.hpp"
#include "vantu/orvanta/common/platform.hpp"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <utility>

namespace vantu::orvanta::simulator {

// The time since the simulation's start; never runs backwards.
using clock_function = std::function<std::int64_t()>;

// The given clock, the system's steady one where none is given, which goes on from the simulation's time. It
// leaves out what the simulation lags behind by beyond half a second: a program that was stopped, or that is
// too slow for its streams, has no more than that to make up for. The simulation outlives the clock.
[[nodiscard]] clock_function make_steady_clock(const simulation& timed,
                                               clock_function source = platform::steady_now_ns);

// Moves the simulation to a time since its start, by itself or through the runner of a scenario.
using advance_function = std::function<void(std::int64_t since_start_ns)>;

// A datagram that a socket has received or sent.
struct wire_datagram {
    communication::direction way{communication::direction::to_service};
    peer with;
    socket_handle socket{invalid_socket}; // of the service, or of the sender that a forged one came from
    std::span<const std::byte> bytes;
};

using wire_function = std::function<void(const wire_datagram&)>;

class server {
  public:
    // Target and sockets outlive the server.
    server(simulation& target, const listeners& sockets, clock_function clock);
    server(simulation& target, const listeners& sockets, clock_function clock, advance_function advance_to);

    // Told of each datagram after it was received, and after it was sent; empty: nobody is told.
    void tell(wire_function told) { told_ = std::move(told); }

    // Moves the simulation to the clock's time as catch_up does, gives it the datagrams that are there now
    // and sends what it has to send. Never sleeps. Returns how many datagrams came.
    std::size_t serve_waiting();

    // Moves the simulation to the clock's time and sends what it has to send on the way; false when that is
    // not done within 20 ms, and is left to the next call.
    bool catch_up();

    // Sends what the simulation has to send.
    void send_outgoing();

  private:
    std::size_t receive_waiting(std::size_t listener);
    // Invalid where a forged datagram can have none.
    [[nodiscard]] socket_handle socket_for(const departure& one);

    simulation& target_;
    const listeners& sockets_;
    clock_function clock_;
    advance_function advance_to_;
    wire_function told_;
    std::optional<listeners> forgers_; // another address than the service's, taken when first used
    byte_buffer buffer_{constants::mode_read};
    receive_record record_{buffer_};
};

} // namespace vantu::orvanta::simulator
