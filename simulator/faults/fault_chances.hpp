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

    // The source for the next datagram that fits a rule. It depends on the seed, the rule, the client (in the
    // order of their first datagrams), the way, the operation (the rule's, else the first in the datagram),
    // and how many such have fitted the rule before.
    [[nodiscard]] fault_random next(std::uint64_t rule, std::optional<std::uint8_t> code,
                                    const piped_datagram& what);

  private:
    struct by_address {
        bool operator()(const peer& left, const peer& right) const noexcept;
    };
    using kind_of_datagram =
        std::tuple<std::uint64_t, std::uint64_t, communication::direction, std::uint64_t>;

    std::uint64_t seed_;
    std::map<peer, std::uint64_t, by_address> clients_;
    std::map<kind_of_datagram, std::uint64_t> fitted_;
};

} // namespace vantu::orvanta::simulator
