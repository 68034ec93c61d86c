// What this process has open at the system; one source file a platform.
#pragma once

#include <cstddef>

namespace orvanta_tests {

// How many descriptors or handles there are now.
[[nodiscard]] std::size_t open_handles();

} // namespace orvanta_tests
