// The log lines for bytes of the service that are not understood.
#pragma once

#include "core/rejection.hpp"

namespace vantu::orvanta {

// Logs the reason at its own location: a warning for a handshake, an info line for the rest; nothing for
// none. To be called without a lock.
void log_rejection(const rejection& rejected);

} // namespace vantu::orvanta
