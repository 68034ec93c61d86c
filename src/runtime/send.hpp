// Sending datagrams on a context's socket, from any thread and without a lock.
#pragma once

#include "context.hpp"
#include "vantu/orvanta/communication/compose.hpp"

#include <cstdint>

namespace vantu::orvanta {

// Sends a datagram to the service and notes the time. A failure of the system is logged after the socket
// is free to be closed. Returns vantu_orvanta_invalid_connection_state when the context is not connected,
// else the code of the transport's status.
[[nodiscard]] std::int32_t send(vantu_orvanta_context& context, const byte_buffer& datagram);

// Composes a datagram of one operation on the stack and sends it.
template <std::uint8_t code>
[[nodiscard]] std::int32_t send_operation(
    vantu_orvanta_context& context, std::uint8_t tag,
    const communication::proto::body<code, communication::direction::to_service>& body) {
    byte_buffer datagram(constants::mode_write);
    communication::compose_datagram<code, communication::direction::to_service>(datagram, tag, body);
    return send(context, datagram);
}

} // namespace vantu::orvanta
