// The chances of rules, each drawn by which datagram it is and not by when it comes: a conversation meets the
// same faults whatever else is sent between its datagrams.
#pragma once

#include "simulator/faults/fault_random.hpp"
#include "simulator/faults/held_datagrams.hpp"
#include "simulator/service/peer.hpp"

#include <cstdint>
#include <map>
#include <optional>
#include <tuple>

namespace vantu::orvanta::simulator {

class fault_chances {
  public:
    explicit fault_chances(std::uint64_t seed) : seed_(seed) {}

    // The number of a client, from 0 in the order of these calls.
    std::uint64_t number_of(const peer& client) {
        return clients_.emplace(client, clients_.size()).first->second;
    }

    // The same from 1, and 0 for a client without such a call.
    [[nodiscard]] std::uint64_t known_number_of(const peer& client) const {
        const auto known = clients_.find(client);
        return known != clients_.end() ? known->second + 1 : 0;
    }

    struct draw {
        fault_random chance;
        bool* in_burst; // whether the datagram before it of the same kind was in a burst; to be kept up
    };

    // The source for the next datagram that fits a rule. It depends on the seed, the rule, the client, the
    // way, the operation (the rule's, else the first in the datagram), and how many such have fitted the rule
    // before.
    [[nodiscard]] draw next(std::uint64_t rule, std::optional<std::uint8_t> code, const piped_datagram& what);

  private:
    using kind_of_datagram =
        std::tuple<std::uint64_t, std::uint64_t, communication::direction, std::uint64_t>;
    struct series {
        std::uint64_t fitted{0};
        bool in_burst{false};
    };

    std::uint64_t seed_;
    std::map<peer, std::uint64_t> clients_;
    std::map<kind_of_datagram, series> drawn_;
};

} // namespace vantu::orvanta::simulator
