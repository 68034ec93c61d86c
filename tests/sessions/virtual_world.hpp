// A world without sockets and clocks for the client library: its socket layer and its clock are a queue and
// a number here, and what it sends goes straight into a simulation. A session that takes minutes runs in
// microseconds, and the same seed gives the same session.
#pragma once

#include "simulator/simulation/simulation.hpp"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

namespace session_tests {

using datagram = std::vector<std::byte>;

// What the library does instead of ending the process when one of its assumptions does not hold.
class end_of_process : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// What the socket layer let the library have, in the order in which it did.
struct delivery {
    datagram bytes;
    bool fits{true}; // false: larger than the receiver's buffer, and so lost
};

// One world at a time: the library's system calls end up in the one that was made last.
class virtual_world {
  public:
    explicit virtual_world(vantu::orvanta::simulator::simulation& service);
    ~virtual_world();
    virtual_world(const virtual_world&) = delete;
    virtual_world& operator=(const virtual_world&) = delete;

    // Moves the clock, and with it the simulation; datagrams for closed ports are lost.
    void advance_to(std::int64_t when_ns);
    [[nodiscard]] std::int64_t now_ns() const { return now_ns_; }
    // When the simulation has something to do next.
    [[nodiscard]] std::int64_t next_due_ns() const;

    // What has been taken from the socket since it was last asked.
    [[nodiscard]] std::vector<delivery> take_deliveries();

    // The socket layer.
    [[nodiscard]] int open(int port); // 0: the lowest one that is free; -1 when it is taken
    void close(int port);
    void send(int from_port, const std::byte* bytes, std::size_t length);
    [[nodiscard]] std::deque<datagram>& waiting_for(int port);
    void note_delivery(const datagram& bytes, bool fits);

    [[nodiscard]] static virtual_world& current();

  private:
    void collect();

    vantu::orvanta::simulator::simulation& service_;
    std::int64_t now_ns_{0};
    std::map<int, std::deque<datagram>> open_ports_;
    std::vector<delivery> deliveries_;
};

} // namespace session_tests
