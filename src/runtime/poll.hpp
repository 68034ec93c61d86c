// The poll: the single place where traffic of an open connection enters the client.
#pragma once

#include "context.hpp"

#include <cstdint>

namespace vantu::orvanta {

// One poll, as vantu_orvanta_poll describes it, without its checks of the arguments. Takes the
// context's mutex; logs after it was released.
[[nodiscard]] std::int32_t poll(vantu_orvanta_context& context, vantu_orvanta_event& event);

} // namespace vantu::orvanta
