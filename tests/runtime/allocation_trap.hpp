// Counts the heap allocations of the calling thread while it lives.
#pragma once

#include <cstddef>

namespace orvanta_tests {

class allocation_trap {
  public:
    allocation_trap();
    ~allocation_trap();
    allocation_trap(const allocation_trap&) = delete;
    allocation_trap& operator=(const allocation_trap&) = delete;

    [[nodiscard]] static std::size_t allocations();
};

} // namespace orvanta_tests
