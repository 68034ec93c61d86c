// The clients that the service knows, by the peer they speak from.
#pragma once

#include "simulator/service/peer.hpp"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace vantu::orvanta::simulator {

// A time that never comes.
inline constexpr std::int64_t never_ns = std::numeric_limits<std::int64_t>::max();

// A device that a client has opened, and when its streams are due.
struct open_device {
    std::uint32_t id{0};
    std::int64_t next_state_ns{never_ns};
    std::int64_t next_status_ns{never_ns};
};

struct client {
    std::uint64_t id{0};
    peer address;
    std::string name;
    std::uint64_t keep_alive_ns{0}; // 0: silence is no reason to forget it
    std::int64_t last_heard_ns{0};
    std::vector<open_device> opened; // in the order of opening

    [[nodiscard]] open_device* find_opened(std::uint32_t device_id) noexcept;

    // The last moment at which the client still counts as alive; never_ns beyond the clock's end.
    [[nodiscard]] std::int64_t alive_until_ns() const noexcept;
};

class client_registry {
  public:
    // More are refused, so that nobody can fill the memory.
    static constexpr std::size_t most_clients = 256;

    explicit client_registry(std::uint64_t first_id) : next_id_(first_id) {}

    // Null for a stranger.
    [[nodiscard]] client* find(const peer& who) noexcept;

    // The peer's client anew, without opened devices: under its old id where the peer is known, else
    // under one that no client had before. References and pointers to clients become invalid.
    client& admit(const peer& who);

    // Does nothing for a stranger. References and pointers to clients become invalid.
    void forget(const peer& who);

    // Forgets everybody. Ids go on: none is given twice.
    void forget_all() noexcept {
        forgotten_ += clients_.size();
        clients_.clear();
    }

    // Takes out a client that has been silent for longer than it declared; false when there is none.
    [[nodiscard]] bool take_silent(std::int64_t now_ns, client& taken);

    [[nodiscard]] std::vector<client>& all() noexcept { return clients_; }
    [[nodiscard]] const std::vector<client>& all() const noexcept { return clients_; }
    // How many have been forgotten or taken out so far.
    [[nodiscard]] std::uint64_t forgotten() const noexcept { return forgotten_; }
    [[nodiscard]] bool is_full() const noexcept { return clients_.size() >= most_clients; }

  private:
    std::vector<client> clients_;
    std::uint64_t next_id_;
    std::uint64_t forgotten_{0};
};

} // namespace vantu::orvanta::simulator
