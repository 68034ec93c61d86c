// Datagrams as a client of the kit writes and reads them.
#pragma once

#include "vantu/orvanta/communication/operations.hpp"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace vantu::orvanta::conformance {

using bytes = std::vector<std::byte>;

// The bytes of a packed record or a number.
template <typename Record> [[nodiscard]] bytes bytes_of(const Record& record) {
    const auto* at = reinterpret_cast<const std::byte*>(&record);
    return {at, at + sizeof(Record)};
}

// A header and one operation.
[[nodiscard]] bytes datagram_of(std::uint8_t code, std::uint8_t tag, std::span<const std::byte> body = {});

// A request that names a device and carries so many bytes after it.
[[nodiscard]] bytes device_request(std::uint8_t code, std::uint8_t tag, std::uint32_t device_id,
                                   std::span<const std::byte> argument = {});

// The requests of the table that name a device, in its order.
[[nodiscard]] std::vector<communication::operation> device_requests();

struct seen_operation {
    std::uint8_t code{0};
    std::uint8_t tag{0};
    bytes body;

    // 0 where the body names none.
    [[nodiscard]] std::uint32_t device_id() const;
    // The body after the device id.
    [[nodiscard]] bytes record() const;
};

// "device_opened, tag 3, device 1", "service_error 177 (device was not opened), tag 3"; "nothing".
[[nodiscard]] std::string text_of(const std::optional<seen_operation>& seen);

// In what a datagram differs from the protocol's layout.
enum class damage : std::uint8_t {
    header,
    reserved,
    not_whole,
    record_magic,
    unknown_code,
    body_length,
};

struct found_damage {
    damage kind{damage::header};
    std::string text; // what was seen
};

struct reading {
    std::vector<seen_operation> operations; // those that a client understands
    std::vector<found_damage> damages;
};

// Reads a datagram as docs/protocol.md says that a client does. What comes after damage that a client
// cannot skip is not looked at.
[[nodiscard]] reading read_datagram(std::span<const std::byte> datagram);

} // namespace vantu::orvanta::conformance
