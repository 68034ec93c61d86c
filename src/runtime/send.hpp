// Sending datagrams on a context's socket, from any thread and without a lock.
#pragma once

#include "context.hpp"
#include "vantu/orvanta/communication/compose.hpp"

#include <cstdint>

namespace vantu::orvanta {

struct sent {
    std::int32_t code{0};
    std::uint32_t failure{0}; // the system's number for log_send_failure; 0: there is nothing to log
};

// Sends a datagram to the service and notes the time. Logs and tells nothing, for a caller that holds a lock.
// The code is vantu_orvanta_invalid_connection_state when the context is not connected, else that of the
// transport's status.
[[nodiscard]] sent send_unlogged(vantu_orvanta_context& context, const byte_buffer& datagram);

// The same with a note of what went out, which the caller tells when it holds no lock any more.
[[nodiscard]] sent send_unlogged(vantu_orvanta_context& context, const byte_buffer& datagram,
                                 noted_datagram& note);

// The same with the datagram told, and a failure of the system logged, after the socket is free to be closed.
// Returns the code.
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
