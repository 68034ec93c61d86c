// The times that the tests with faults share.
#pragma once

#include <cstdint>

namespace fault_tests {

// No keep-alive falls into a test: their exchange is a subject of its own.
inline constexpr std::uint64_t keep_alive_ns = 3'600'000'000'000;
// For what must come: nobody waits this long unless something is broken.
inline constexpr std::uint64_t patience_ns = 30'000'000'000;

} // namespace fault_tests
