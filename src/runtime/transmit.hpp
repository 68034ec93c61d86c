// Sending datagrams on a context's connection, from any thread and without a lock.
#pragma once

#include "runtime/context.hpp"
#include "vantu/orvanta/communication/compose.hpp"

#include <cstdint>

namespace vantu::orvanta {

// Sends a datagram to the service and notes the time. Returns a client error code: 3 when the context
// is not connected, else that of the transport's status.
[[nodiscard]] std::int32_t transmit(vantu_orvanta_context& context, byte_buffer& datagram);

// Composes a datagram of one operation on the stack and sends it.
template <std::uint8_t code>
[[nodiscard]] std::int32_t transmit_operation(
    vantu_orvanta_context& context, std::uint8_t tag,
    const communication::proto::body<code, communication::direction::to_service>& body) {
    byte_buffer datagram(constants::mode_write);
    communication::compose_datagram<code, communication::direction::to_service>(datagram, tag, body);
    return transmit(context, datagram);
}

} // namespace vantu::orvanta
