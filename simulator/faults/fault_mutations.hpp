// The faults that change the bytes of one datagram, as functions of the bytes and of chance alone.
#pragma once

#include "simulator/faults/fault_datagrams.hpp"
#include "simulator/faults/fault_random.hpp"
#include "simulator/faults/faults.hpp"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace vantu::orvanta::simulator {

// A change that a fault is to make to a datagram.
struct mutation {
    fault_kind kind{fault_kind::empty};
    std::optional<std::uint8_t> code;    // the operation to act on; empty: the first
    std::optional<std::uint32_t> number; // the rule's argument
};

// Changes the datagram as the row of a fault that is a change says; false, and nothing has changed, where
// that is impossible. No datagram grows beyond greatest_datagram.
[[nodiscard]] bool mutate(datagram_bytes& datagram, const mutation& what, fault_random& chance);

} // namespace vantu::orvanta::simulator
