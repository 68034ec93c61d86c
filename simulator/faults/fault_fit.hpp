// The operations that a rule is about: by the table, for what is typed, and in a datagram.
#pragma once

#include "shared/datagram_operations.hpp"
#include "simulator/faults/faults.hpp"

#include <cstddef>
#include <optional>
#include <span>

namespace vantu::orvanta::simulator {

// Whether the rule is for datagrams of this way.
[[nodiscard]] bool goes(const fault_rule& rule, communication::direction way);

// Whether the rule can be about this operation.
[[nodiscard]] bool is_about(const fault_rule& rule, const communication::operation& row);

// Whether the rule can fit a datagram at all: whatever it does not choose, or some operation of the table.
[[nodiscard]] bool can_fit(const fault_rule& rule);

// The first operation in a datagram that the rule is about; that of a patch has the field.
[[nodiscard]] std::optional<operation_place> chosen_operation(const fault_rule& rule,
                                                              std::span<const std::byte> datagram,
                                                              communication::direction way);

} // namespace vantu::orvanta::simulator
