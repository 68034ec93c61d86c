// The datagrams of the pipeline: finding the operations in one, whatever its bytes, and those that faults
// make themselves.
#pragma once

#include "vantu/orvanta/communication/header.hpp"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace vantu::orvanta::simulator {

using datagram_bytes = std::vector<std::byte>;

// Where an operation stands: its record at `record`, then as much of its body as is there.
struct operation_place {
    std::size_t record{0};
    std::uint8_t code{0};
    std::uint8_t tag{0};
    std::size_t body_size{0}; // bytes of the body that are there, at most those that its length states

    [[nodiscard]] std::size_t body() const { return record + sizeof(communication::proto::op); }
    [[nodiscard]] std::size_t end() const { return body() + body_size; }
};

// The operations after the header, in order, up to the first record that is cut short or lacks its magic.
// Lengths are checked, contents are not.
[[nodiscard]] std::vector<operation_place> operations_in(std::span<const std::byte> datagram);

// The first operation of that code, or of any where none is given.
[[nodiscard]] std::optional<operation_place> find_operation_in(std::span<const std::byte> datagram,
                                                               std::optional<std::uint8_t> code);

// op 240: the service's answer to a request that is refused.
[[nodiscard]] datagram_bytes refusal_of(std::uint8_t tag, std::uint32_t device_id, std::uint8_t status);

// op 2 with tag 0: 11 bytes that mean nothing to a client.
[[nodiscard]] datagram_bytes idle_acknowledgement();

// The datagrams that another program might send in the service's name, in turn by number: op 16 for an
// Orvanta3 with the id forged_device_id, op 66 of that device with tag 0, op 6.
inline constexpr std::uint32_t forged_device_id = 4095;
[[nodiscard]] datagram_bytes forged_datagram(std::uint32_t number);

} // namespace vantu::orvanta::simulator
