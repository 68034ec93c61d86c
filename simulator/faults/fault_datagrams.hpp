// The datagrams of the pipeline: those that faults make themselves.
#pragma once

#include "shared/datagram_operations.hpp"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vantu::orvanta::simulator {

using datagram_bytes = std::vector<std::byte>;

// op 240: the service's answer to a request that is refused.
[[nodiscard]] datagram_bytes refusal_of(std::uint8_t tag, std::uint32_t device_id, std::uint8_t status);

// op 2 with tag 0: 11 bytes that mean nothing to a client.
[[nodiscard]] datagram_bytes idle_acknowledgement();

// The datagrams that another program might send in the service's name, in turn by number: op 16 for an
// Orvanta3 with the id forged_device_id, op 66 of that device with tag 0, op 6.
inline constexpr std::uint32_t forged_device_id = 4095;
[[nodiscard]] datagram_bytes forged_datagram(std::uint32_t number);

} // namespace vantu::orvanta::simulator
