// A world without sockets and clocks: queues of datagrams and a number, and what is sent goes straight into a
// simulation. A session that takes minutes runs in microseconds, and the same seed gives the same session.
#pragma once

#include "sessions/reference_writer.hpp"
#include "simulator/simulation/simulation.hpp"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <utility>
#include <vector>

namespace orvanta_tests {

// One world at a time: where the library's system calls end up in a world, it is the one made last.
class virtual_world {
  public:
    explicit virtual_world(vantu::orvanta::simulator::simulation& service);
    ~virtual_world();
    virtual_world(const virtual_world&) = delete;
    virtual_world& operator=(const virtual_world&) = delete;

    // Moves the clock, and with it the simulation; datagrams for closed ports are lost.
    void advance_to(std::int64_t when_ns);
    [[nodiscard]] std::int64_t now_ns() const { return now_ns_; }

    // The socket layer.
    [[nodiscard]] int open(int port); // 0: the lowest one that is free; -1 when it is taken
    void close(int port);
    void send(int from_port, octets bytes);
    // Lets time pass until a datagram waits for the port or the deadline has come.
    void await_datagram(int port, std::int64_t deadline_ns);
    [[nodiscard]] bool has_datagram(int port) const { return !open_ports_.at(port).empty(); }
    [[nodiscard]] packet take_datagram(int port); // has_datagram(port) must be true

    // The datagrams that were taken, and those that were sent, since this was last asked.
    [[nodiscard]] std::vector<packet> taken() { return std::exchange(taken_, {}); }
    [[nodiscard]] std::vector<packet> sent() { return std::exchange(sent_, {}); }

    [[nodiscard]] static virtual_world& current();

  private:
    void collect();

    vantu::orvanta::simulator::simulation& service_;
    std::int64_t now_ns_{0};
    std::map<int, std::deque<packet>> open_ports_;
    std::vector<packet> taken_;
    std::vector<packet> sent_;
};

} // namespace orvanta_tests
