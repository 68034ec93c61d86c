// One client of a capture: the core's connection, given the datagrams that came to the client.
#pragma once

#include "core/connection.hpp"
#include "ctl/replay/replayed.hpp"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>

namespace vantu::orvanta::ctl {

// Whether a datagram begins as those of clients and services do.
[[nodiscard]] bool has_the_header(std::span<const std::byte> datagram);

// Times are those of the capture, in nanoseconds.
class played_client {
  public:
    // A client whose beginning the capture lacks has a connection.
    explicit played_client(replay_counts& counts) : counts_(counts) {}

    // The client has asked for a connection: the next datagram is the answer.
    void send_connect() { state_ = state::awaiting_answer; }

    // From here on the library keeps events to itself.
    void send_goodbye(std::int64_t time_ns);

    using listener = std::function<void(replayed_outcome outcome)>;
    void receive(std::int64_t time_ns, std::span<const std::byte> datagram, const listener& told);

  private:
    enum class state : std::uint8_t { unknown, awaiting_answer, open, leaving, closed };

    [[nodiscard]] bool fill(std::span<const std::byte> datagram, const listener& told);
    void read_answer(std::int64_t time_ns, std::span<const std::byte> datagram, const listener& told);
    void read_datagram(std::span<const std::byte> datagram, const listener& told);
    void read_operations(const listener& told);
    void read_operation(const listener& told);
    void reject(std::int32_t code, std::string reason, const listener& told);

    replay_counts& counts_;
    connection connection_;
    state state_{state::unknown};
    std::int64_t goodbye_ns_{0};
};

} // namespace vantu::orvanta::ctl
