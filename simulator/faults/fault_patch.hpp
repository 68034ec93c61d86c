// The fields that patch writes: those of the header, of an operation's record, and of its body by their names
// in communication/fields.hpp.
#pragma once

#include "shared/datagram_operations.hpp"
#include "simulator/faults/fault_datagrams.hpp"
#include "simulator/faults/fault_random.hpp"
#include "simulator/faults/faults.hpp"
#include "vantu/orvanta/communication/fields.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vantu::orvanta::simulator {

// Where a field stands: in the header, in an operation's record, or in its body.
enum class field_place : std::uint8_t { header, record, body };

struct patch_field {
    communication::placed_field field; // its offset counts from the place's first byte
    field_place place{field_place::body};
};

// The field that a rule patches, in an operation of this code; empty where it has none of that name.
[[nodiscard]] std::optional<patch_field> patched_field(const fault_rule& rule, std::uint8_t code,
                                                       communication::direction way);

// The names of all fields that an operation has.
[[nodiscard]] std::vector<std::string_view> fields_to_patch(std::uint8_t code, communication::direction way);

// Whether the field is there, in an operation of a datagram.
[[nodiscard]] bool holds_patched_field(const fault_rule& rule, const operation_place& place,
                                       communication::direction way);

// Says what is wrong with the value, which has to be right for one of the operations that the rule is about;
// empty where it is.
[[nodiscard]] std::string complaint_about_value(const fault_rule& rule);

// The first operation in a datagram that has the field; an empty place where the field is one of its header
// and the rule chooses no operation. Nothing where the datagram does not have the field.
[[nodiscard]] std::optional<operation_place> operation_to_patch(const fault_rule& rule,
                                                                std::span<const std::byte> datagram,
                                                                communication::direction way);

// Writes the field; false, and nothing has changed, where there is none or it has that value already.
[[nodiscard]] bool patch(const fault_rule& rule, datagram_bytes& datagram, communication::direction way,
                         fault_random& chance);

} // namespace vantu::orvanta::simulator
