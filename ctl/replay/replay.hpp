// A capture played into the client's core: each datagram that came to a client is given to a connection of
// its own, without socket, clock and thread.
#pragma once

#include "ctl/replay/replayed.hpp"

#include <compare>
#include <map>
#include <memory>
#include <set>
#include <span>

namespace vantu::orvanta::ctl {

class played_client;

// Clients are those who ask for a connection, and those to whom the service's usual port sends.
class capture_replay {
  public:
    explicit capture_replay(replay_listener told);
    ~capture_replay();
    capture_replay(const capture_replay&) = delete;
    capture_replay& operator=(const capture_replay&) = delete;

    // The datagrams of the capture, one after the other.
    void play(const captured_datagram& one);

    [[nodiscard]] const replay_counts& counts() const noexcept { return counts_; }

  private:
    struct by_place {
        bool operator()(const socket_place& a, const socket_place& b) const;
    };

    [[nodiscard]] bool is_service(const socket_place& place) const;
    [[nodiscard]] played_client& client_at(const socket_place& place);

    replay_listener told_;
    replay_counts counts_;
    bool has_begun_{false};
    std::int64_t first_ns_{0};
    std::set<socket_place, by_place> services_; // beside those at the usual port
    std::map<socket_place, std::unique_ptr<played_client>, by_place> clients_;
};

} // namespace vantu::orvanta::ctl
