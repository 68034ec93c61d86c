// The poll: the single place where traffic of an open connection enters the client.
#pragma once

#include "runtime/context.hpp"

#include <cstdint>

namespace vantu::orvanta {

inline constexpr std::int64_t keep_alive_interval_ns = 1'000'000'000;

// One poll, as vantu_orvanta_poll describes it, without its checks of the arguments. Takes the
// context's mutex. Throws std::bad_alloc when the device table cannot grow.
[[nodiscard]] std::int32_t poll(vantu_orvanta_context& context, vantu_orvanta_event& event);

// The steps of a poll; each needs the context's mutex.

// Sends a keep-alive when a second has passed since the last send. Returns the code of that send.
[[nodiscard]] std::int32_t keep_alive_if_due(vantu_orvanta_context& context);

// Takes a waiting datagram into the receive buffer and checks its header. Returns 0 with an operation
// ready to be read, or with an empty buffer when nothing was waiting; else an error code.
[[nodiscard]] std::int32_t receive_datagram(vantu_orvanta_context& context);

// Takes the next operation out of the receive buffer, which holds at least an operation record.
[[nodiscard]] std::int32_t take_operation(vantu_orvanta_context& context, vantu_orvanta_event& event);

} // namespace vantu::orvanta
