// Ways in which a relay makes a right service wrong.
#pragma once

#include "conformance/tampered_service.hpp"

#include <cstdint>
#include <functional>

namespace orvanta_tests {

// The code of a datagram's first operation; 0 where it has none.
[[nodiscard]] std::uint8_t code_of(const bytes& datagram);
// Whether an operation of this code is somewhere in it.
[[nodiscard]] bool has_operation(const bytes& datagram, std::uint8_t code);

// Datagrams that begin with this operation are lost.
[[nodiscard]] tamper without(std::uint8_t code);
// Whole requests of this code are followed by others.
[[nodiscard]] tamper followed(std::uint8_t code, const std::vector<bytes>& by);
// Datagrams for which this is so are replaced by another.
[[nodiscard]] tamper replaced(const std::function<bool(const bytes&)>& which, const bytes& by);
// Those that begin with this operation get a byte at a place; a place beyond the end changes nothing.
[[nodiscard]] tamper with_byte(std::uint8_t code, std::size_t place, std::uint8_t value);
// An operation of this code, wherever it stands, gets a byte at a place of its body.
[[nodiscard]] tamper with_body_byte(std::uint8_t code, std::size_t place, std::uint8_t value);
// Refusals with one status have another.
[[nodiscard]] tamper with_status(std::uint8_t from, std::uint8_t to);
// Nothing passes after a datagram for which this is so.
[[nodiscard]] tamper dead_after(const std::function<bool(const bytes&)>& which);

// device_open and device_close as they stand on the wire, with tag 77.
[[nodiscard]] bytes opening(std::uint32_t device);
[[nodiscard]] bytes closing(std::uint32_t device);

// A service that tells other values of what a get asks for than it has.
[[nodiscard]] wrongs forgets_what_was_set(std::uint8_t get, std::size_t place, std::uint8_t value);
// A service that turns torque scaling off when it refuses to set it.
[[nodiscard]] wrongs changes_what_it_refuses();
// A service that hears no request that comes once more, until it has passed over so many.
[[nodiscard]] tamper without_repeats(std::size_t count);
// A service that answers the goodbye of a client alone.
[[nodiscard]] tamper without_goodbyes_of_strangers();
// Each acceptance has another client id.
[[nodiscard]] tamper with_ever_new_ids();

} // namespace orvanta_tests
