// Ending a connection politely.
#pragma once

#include "context.hpp"

namespace vantu::orvanta {

// If connected, tells the service and polls until it confirms, a poll fails or 100 ms have passed;
// then closes the socket. Other events of these polls are discarded.
void say_goodbye(vantu_orvanta_context& context);

} // namespace vantu::orvanta
