// The polling thread under every fault that meets a request: the first code ends it, nothing else does.
#include "faults/fault_fixture.hpp"
#include "faults/matrix_requesting.hpp"
#include "simulator/simulation/verbs.hpp"
#include "simulator/sockets/server.hpp"
#include "support/log_capture.hpp"
#include "vantu/orvanta/client.hpp"

#include <atomic>
#include <chrono>
#include <future>
#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta;
using namespace vantu::orvanta::simulator;
using library_client = vantu::orvanta::client;

// The code that a row of the table ends the thread with: its first one; 3 after a goodbye; else 0.
std::uint32_t code_of(const matrix_row& row) {
    constexpr std::string_view mark = "code ";
    if (const auto at = row.seen.find(mark); at != std::string_view::npos) {
        return static_cast<std::uint32_t>(std::stoul(std::string(row.seen.substr(at + mark.size()))));
    }
    return row.seen.find("disconnected") != std::string_view::npos
               ? std::uint32_t{vantu_orvanta_invalid_connection_state}
               : 0;
}

// A client with a polling thread, and the service on the test's own thread.
class threaded_fixture {
  public:
    threaded_fixture() {
        auto code = std::async(std::launch::async, [this] {
            return vantu_orvanta_connect_ports(client_->context(), "0", sockets_.port().c_str(), "threaded",
                                               0, 0, keep_alive_ns, patience_ns);
        });
        EXPECT_TRUE(
            serve_until([&] { return code.wait_for(std::chrono::seconds(0)) == std::future_status::ready; }));
        EXPECT_EQ(code.get(), 0);
        thread = vantu_orvanta_poll_thread_start(client_->context(), library_client::dispatch_event,
                                                 client_.get());
        EXPECT_TRUE(is_answered());
    }
    ~threaded_fixture() {
        vantu_orvanta_poll_thread_stop(thread);
        simulated.faults().heal();
        const auto goodbye = std::async(std::launch::async, [this] { client_.reset(); });
        EXPECT_TRUE(serve_until([&] { return is_over(goodbye); }));
    }
    threaded_fixture(const threaded_fixture&) = delete;
    threaded_fixture& operator=(const threaded_fixture&) = delete;

    void tell(std::string_view rule) {
        for (const std::string_view verb : verbs_of(rule)) {
            EXPECT_TRUE(run_verb(simulated, verb).good) << verb;
        }
    }

    void ask() { EXPECT_EQ(client_->config_gravity_compensation_get(1, {}), 0); }

    // Whether the device can be opened: the thread takes the answer.
    bool is_answered() {
        std::atomic<bool> answered{false};
        EXPECT_EQ(client_->device_open(1, 0, [&](library_client&, const reply<void>&) { answered = true; }),
                  0);
        return serve_until([&] { return answered.load(); });
    }

    // Serves with the simulation's time going on until something is so; false when it takes too long.
    template <typename Condition> bool serve_until(Condition condition) {
        const std::int64_t deadline_ns = platform::steady_now_ns() + static_cast<std::int64_t>(patience_ns);
        while (!condition()) {
            if (platform::steady_now_ns() > deadline_ns) {
                return false;
            }
            now_ns_ += simulation_tick_ns;
            server_.serve_waiting();
            platform::sleep_until_ns(platform::steady_now_ns() + simulation_tick_ns);
        }
        return true;
    }

    simulation simulated{[] {
        simulation_settings settings;
        settings.rate_hz = 0;
        settings.devices = make_devices(1, 0);
        return settings;
    }()};
    vantu_orvanta_poll_thread* thread{nullptr};

  private:
    template <typename Future> static bool is_over(const Future& call) {
        return call.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    }

    std::int64_t now_ns_{0};
    listeners sockets_{"0"};
    server server_{simulated, sockets_, [this] { return now_ns_; }};
    log_capture log_;
    std::unique_ptr<library_client> client_{std::make_unique<library_client>(library_client::config{})};
};

TEST(polling_thread, ends_with_the_first_code_of_each_fault_and_lives_through_the_others) {
    for (const matrix_row& row : requesting_rows) {
        if (row.rule.starts_with("stale")) {
            continue; // needs an earlier session; it brings no code
        }
        threaded_fixture fixture;
        fixture.tell(row.rule);
        fixture.ask();
        const std::uint32_t expected = code_of(row);
        EXPECT_TRUE(fixture.serve_until([&] {
            return expected != 0
                       ? vantu_orvanta_poll_thread_result(fixture.thread) != 0
                       : fixture.simulated.faults().happened(
                             find_fault(row.rule.substr(0, row.rule.find(' ')))->kind) >= row.happened;
        })) << row.rule;
        if (expected == 0) {
            fixture.simulated.faults().heal();
            if (row.next == "opened") {
                EXPECT_TRUE(fixture.is_answered()) << row.rule;
            }
        }
        EXPECT_EQ(vantu_orvanta_poll_thread_result(fixture.thread), expected) << row.rule;
    }
}

} // namespace
} // namespace orvanta_tests
