// Finding the operations in a datagram, whatever its bytes.
#pragma once

#include "vantu/orvanta/communication/header.hpp"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace vantu::orvanta {

// Where an operation stands: its record at `record`, then as much of its body as is there.
struct operation_place {
    std::size_t record{0};
    std::uint8_t code{0};
    std::uint16_t length{0}; // as the record states it
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

} // namespace vantu::orvanta
