// Ending a connection politely.
#pragma once

#include "runtime/context.hpp"

#include <cstdint>

namespace vantu::orvanta {

inline constexpr std::int64_t goodbye_timeout_ns = 100'000'000;

// If connected, tells the service and polls until it confirms, a poll fails or 100 ms have passed;
// then closes the connection. What else the polls bring is discarded.
void say_goodbye(vantu_orvanta_context& context);

} // namespace vantu::orvanta
