// Waiting for datagrams on several sockets at once, for programs that serve many peers.
#pragma once

#include "network/socket.hpp"

#include <span>

namespace vantu::orvanta {

// Sleeps until a datagram or an error waits on one of the sockets, or the steady clock reaches the
// deadline. True when there is something to receive. Invalid handles are passed over. A signal that
// the calling thread handles ends the wait early with false.
[[nodiscard]] bool wait_for_packets(std::span<const socket_handle> sockets, std::int64_t deadline_ns);

} // namespace vantu::orvanta
