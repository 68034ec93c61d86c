// The two records that frame every datagram: its header, and the record before each operation.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vantu::orvanta::communication::proto {

inline constexpr std::uint16_t header_magic = 0x9EE9;
inline constexpr std::uint16_t protocol_version = 1;
inline constexpr std::uint8_t op_magic = 0xFF;

#pragma pack(push, 1)

// Opens every datagram.
struct header {
    std::uint16_t magic;
    std::uint16_t version;
    std::uint16_t reserved; // sent as 0, ignored on receipt
};
static_assert(sizeof(header) == 6 && alignof(header) == 1);
static_assert(offsetof(header, magic) == 0);
static_assert(offsetof(header, version) == 2);
static_assert(offsetof(header, reserved) == 4);

// Stands before each operation's body.
struct op {
    std::uint8_t magic;
    std::uint8_t code;
    std::uint16_t length; // bytes of the body that follows
    std::uint8_t tag;     // chosen by the requester, echoed in the reply; 0: nobody waits
};
static_assert(sizeof(op) == 5 && alignof(op) == 1);
static_assert(offsetof(op, magic) == 0);
static_assert(offsetof(op, code) == 1);
static_assert(offsetof(op, length) == 2);
static_assert(offsetof(op, tag) == 4);

#pragma pack(pop)

inline constexpr header datagram_header{header_magic, protocol_version, 0};

} // namespace vantu::orvanta::communication::proto
