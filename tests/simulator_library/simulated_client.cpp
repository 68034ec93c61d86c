// A client of a simulator.
#include "simulator_library/simulated_client.hpp"

#include <chrono>
#include <future>
#include <gtest/gtest.h>
#include <stdexcept>

namespace orvanta_tests {

using namespace vantu::orvanta;

service_simulator::settings by_hand() {
    service_simulator::settings settings;
    settings.manual_clock = true;
    settings.seed = 1;
    return settings;
}

void wait_until(const std::function<bool()>& condition, const std::function<void()>& meanwhile) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) {
            FAIL() << "what was waited for did not come";
        }
        if (meanwhile) {
            meanwhile();
        }
        vantu_orvanta_sleep(100'000);
    }
}

simulated_client::simulated_client(service_simulator& service) : service_(service), client_({}) {
    EXPECT_EQ(vantu_orvanta_init(), 0);
    // The first that is said to the simulator tells whether it serves itself.
    try {
        (void)service_.serve_waiting();
    } catch (const std::logic_error&) {
        served_by_hand_ = false;
    }
}

// The goodbye at the end waits for its answer for 100 ms.
simulated_client::~simulated_client() = default;

void simulated_client::serve() {
    if (served_by_hand_) {
        (void)service_.serve_waiting();
    }
}

std::int32_t simulated_client::connect(std::uint64_t keep_alive_ns, std::uint64_t reply_timeout_ns) {
    auto attempt = std::async(std::launch::async, [&] {
        return vantu_orvanta_connect_ports(context(), "0", service_.port().c_str(), "a user's test", 0, 0,
                                           keep_alive_ns, reply_timeout_ns);
    });
    while (attempt.wait_for(std::chrono::microseconds(100)) != std::future_status::ready) {
        serve();
    }
    return attempt.get();
}

void simulated_client::poll() {
    serve();
    vantu_orvanta_event event{};
    do {
        poll_code = vantu_orvanta_poll(context(), &event);
        if (poll_code != 0) {
            return;
        }
        ++counts[event.event_type];
        if (event.event_type != 0 && event.event_type != vantu_orvanta_event_cursor_state) {
            last = event;
        }
    } while (event.event_type != 0);
}

void simulated_client::poll_until(std::uint32_t type, std::size_t count) {
    poll();
    wait_until([&] { return counts[type] >= count; }, [&] { poll(); });
}

void simulated_client::open(std::uint32_t device_id) {
    const std::size_t before = counts[vantu_orvanta_event_device_opened];
    ASSERT_EQ(vantu_orvanta_device_open(context(), device_id, 1, 0), 0);
    poll_until(vantu_orvanta_event_device_opened, before + 1);
}

} // namespace orvanta_tests
