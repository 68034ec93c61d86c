// Operations from the service, written out by hand.
#pragma once

#include "support/bytes.hpp"

#include <cstdint>
#include <string>
#include <vector>

namespace orvanta_tests {

inline const bytes id_5{5, 0, 0, 0};

// Second byte 7, short id 0xBEEF, uuid 60..6F.
[[nodiscard]] bytes device_listed(std::uint32_t id, std::uint8_t type);

// An operation that a connected client receives: its body, and the event that the body becomes.
struct received_operation {
    std::uint8_t code;
    std::string name;
    bytes body;
    std::uint32_t event_type;
    bool copies_tag;
    bytes event_device; // 4 bytes
    bytes payload;      // zeros follow
    bytes listing;      // the operation that has to come before; none for most

    // The 310 bytes of the event.
    [[nodiscard]] bytes event(std::uint8_t tag) const;
};

// One row for each operation with an event, about device 0xA1B2C3D4 where it names one. A row that the
// operation table has and this one lacks fails the test poll_conformance.
[[nodiscard]] const std::vector<received_operation>& received_operations();

} // namespace orvanta_tests
