// The handle of vantu_orvanta_wait_handle as an event loop sees it; one source file a platform.
#pragma once

#include <cstdint>

namespace orvanta_tests {

// Whether the handle tells that there is a reason to poll, now or within so many milliseconds. On Windows
// that resets it.
[[nodiscard]] bool is_signalled(std::intptr_t handle, int limit_ms = 0);

inline constexpr int patience_ms = 30'000;

} // namespace orvanta_tests
