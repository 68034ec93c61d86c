// Figures that the system keeps of this process and its threads; one source file a platform.
#pragma once

#include <cstddef>
#include <cstdint>

namespace orvanta_tests {

// The memory in which this process lives at present (working set, resident set), in bytes.
[[nodiscard]] std::size_t memory_in_use();

// The processor time of one thread, which must still live when it is asked for.
class thread_meter {
  public:
    // Counted for the calling thread.
    thread_meter();
    ~thread_meter();
    thread_meter(const thread_meter&) = delete;
    thread_meter& operator=(const thread_meter&) = delete;

    // From any thread.
    [[nodiscard]] std::int64_t processor_time_ns() const;

  private:
    std::uintptr_t thread_; // what the platform knows it by
};

} // namespace orvanta_tests
