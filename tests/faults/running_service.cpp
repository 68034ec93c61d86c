// A simulation on the service's own port, on a thread of the test.
#include "faults/running_service.hpp"

#include "network/socket.hpp"
#include "simulator/simulation/verbs.hpp"
#include "support/library_sockets.hpp"

#include <gtest/gtest.h>

namespace orvanta_tests {

using namespace vantu::orvanta;
using namespace vantu::orvanta::simulator;

namespace {

const started_sockets sockets_of_the_program;

simulation_settings quiet_settings() {
    simulation_settings settings;
    settings.rate_hz = 0;
    settings.devices = make_devices(1, 0);
    return settings;
}

} // namespace

running_service::running_service()
    : simulated_(quiet_settings()), server_(simulated_, sockets_, make_steady_clock(simulated_)),
      thread_([this] { serve(); }) {}

running_service::~running_service() {
    stop_ = true;
    thread_.join();
}

void running_service::serve() {
    constexpr std::int64_t longest_sleep_ns = 5'000'000;
    while (!stop_) {
        std::int64_t deadline_ns = platform::steady_now_ns() + longest_sleep_ns;
        {
            const std::lock_guard lock(mutex_);
            server_.serve_waiting();
        }
        (void)wait_for_packets(sockets_.sockets(), deadline_ns);
    }
}

void running_service::tell(const std::string& verb) {
    const std::lock_guard lock(mutex_);
    const verb_result result = run_verb(simulated_, verb);
    EXPECT_TRUE(result.good) << verb << ": " << result.text;
    server_.send_outgoing();
}

std::uint64_t running_service::happened(fault_kind kind) {
    const std::lock_guard lock(mutex_);
    return simulated_.faults().happened(kind);
}

} // namespace orvanta_tests
