// A program of a user's while it runs: a client with its polling thread, on the service's own port, that
// counts what it is told.
#pragma once

#include "vantu/orvanta/client.hpp"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>

namespace orvanta_tests {

// Waits for a condition; the test fails when it does not come within the time.
void wait_until(const char* what, const std::function<bool()>& condition, std::uint64_t seconds = 60);

// The number that an environment variable holds, else the given one.
[[nodiscard]] std::uint64_t number_from(const char* variable, std::uint64_t otherwise);

// The descriptors and the threads that this process has.
struct belongings {
    std::size_t descriptors{0};
    std::size_t threads{0};
    friend bool operator==(const belongings&, const belongings&) = default;
};
[[nodiscard]] belongings belongings_of_this_process();

class running_client {
  public:
    running_client();
    // Stops the thread and says goodbye.
    ~running_client();
    running_client(const running_client&) = delete;
    running_client& operator=(const running_client&) = delete;

    // Connects as programs do, from the first local port that is free, and returns the code; the thread
    // polls from then on.
    [[nodiscard]] std::int32_t connect(std::uint64_t reply_timeout_ns);

    // Asks the service to open a device, with the tag, and returns the code.
    std::int32_t ask_to_open(std::uint32_t device_id, std::uint8_t tag = 0);
    std::int32_t ask_to_close(std::uint32_t device_id);

    // The code that ended the thread; 0 while it polls.
    [[nodiscard]] std::uint32_t thread_result() const;

    std::atomic<std::uint64_t> states{0};
    std::atomic<std::uint32_t> opened{0};  // the device that was opened last
    std::atomic<std::uint32_t> closed{0};  // the device that was closed last
    std::atomic<std::uint32_t> refusal{0}; // the code of the last request that was refused
    std::atomic<bool> dismissed{false};    // the service has said goodbye

  private:
    [[nodiscard]] vantu::orvanta::client::config callbacks();

    vantu::orvanta::client client_;
    vantu_orvanta_poll_thread* thread_{nullptr};
};

} // namespace orvanta_tests
