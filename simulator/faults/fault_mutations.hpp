// The faults that change the bytes of one datagram, as functions of the bytes and of chance alone.
#pragma once

#include "simulator/faults/fault_datagrams.hpp"
#include "simulator/faults/fault_random.hpp"
#include "simulator/faults/faults.hpp"

namespace vantu::orvanta::simulator {

// Changes a datagram that goes this way as a rule says whose fault is a change; false, and nothing has
// changed, where that is impossible. No datagram grows beyond greatest_datagram.
[[nodiscard]] bool mutate(datagram_bytes& datagram, const fault_rule& rule, communication::direction way,
                          fault_random& chance);

} // namespace vantu::orvanta::simulator
