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

    // How many blocks of operator new the thread has taken since, less those that it gave back.
    [[nodiscard]] static std::ptrdiff_t blocks_kept();
};

// Lets one operator new of the calling thread fail while it lives: the nth from here (1: the next one).
class allocation_failure {
  public:
    explicit allocation_failure(std::size_t nth);
    ~allocation_failure();
    allocation_failure(const allocation_failure&) = delete;
    allocation_failure& operator=(const allocation_failure&) = delete;

    // Whether that many were asked for, so that one has failed.
    [[nodiscard]] static bool happened();
};

} // namespace orvanta_tests
