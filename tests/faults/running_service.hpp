// A simulation on the service's own port, on a thread of the test, that can be told verbs.
#pragma once

#include "simulator/simulation/simulation.hpp"
#include "simulator/sockets/server.hpp"

#include <atomic>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace orvanta_tests {

class running_service {
  public:
    // One Orvanta3 that streams nothing.
    running_service();
    ~running_service();
    running_service(const running_service&) = delete;
    running_service& operator=(const running_service&) = delete;

    // Done on the service's thread; returns when it was done. A wrong verb fails the test.
    void tell(const std::string& verb);

    [[nodiscard]] std::uint64_t happened(vantu::orvanta::simulator::fault_kind kind);

  private:
    void serve();

    vantu::orvanta::simulator::simulation simulated_;
    vantu::orvanta::simulator::listeners sockets_{"54320"};
    vantu::orvanta::simulator::server server_;
    std::mutex mutex_; // simulation and server, between the turns of the thread
    std::atomic<bool> stop_{false};
    std::thread thread_;
};

} // namespace orvanta_tests
