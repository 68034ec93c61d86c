// A simulated service with one device and a connected client of it, in one process: what a long run watches.
#pragma once

#include "soak/process_figures.hpp"
#include "vantu/orvanta/client.hpp"
#include "vantu/orvanta/simulator.hpp"

#include <atomic>
#include <cstdint>
#include <memory>

namespace orvanta_tests {

// The service, served by a thread of its own, on a free port.
class running_service {
  public:
    explicit running_service(double rate_hz);

    [[nodiscard]] const std::string& port() const { return simulated_.port(); }
    // Cursor states sent so far.
    [[nodiscard]] std::uint64_t states_sent() const;

  private:
    vantu::orvanta::service_simulator simulated_;
};

// The client and its polling thread. Throws std::runtime_error for whatever does not come within ten seconds.
class streaming_client {
  public:
    explicit streaming_client(const std::string& port);
    ~streaming_client();
    streaming_client(const streaming_client&) = delete;
    streaming_client& operator=(const streaming_client&) = delete;

    void open_device();
    void close_device();

    // Cursor states delivered so far.
    [[nodiscard]] std::uint64_t states_received() const { return states_received_; }
    [[nodiscard]] std::int64_t polling_time_ns() const { return meter_->processor_time_ns(); }
    // The code that ended the polling thread; 0 while it runs.
    [[nodiscard]] std::uint32_t polling_result() const { return vantu_orvanta_poll_thread_result(thread_); }
    // Throws when it has ended.
    void check_polling() const;

  private:
    void listed(unsigned device_id);

    std::unique_ptr<thread_meter> meter_; // of the polling thread; made by it, before the device is known
    std::atomic<unsigned> device_id_{0};
    std::atomic<bool> open_{false};
    std::atomic<std::uint64_t> states_received_{0};
    vantu::orvanta::client client_;
    vantu_orvanta_poll_thread* thread_{nullptr};
};

} // namespace orvanta_tests
