// Time that a test moves by hand, with the client library at the other end.
#include "simulator_library/simulated_client.hpp"

#include <chrono>
#include <gtest/gtest.h>
#include <stdexcept>

namespace orvanta_tests {
namespace {

using namespace std::chrono_literals;
using vantu::orvanta::service_simulator;

TEST(a_manual_clock, stands_until_it_is_moved) {
    service_simulator service(by_hand());
    simulated_client client(service);
    ASSERT_EQ(client.connect(), 0);
    client.open(1);
    for (int i = 0; i < 20; ++i) {
        client.poll();
        vantu_orvanta_sleep(1'000'000);
    }
    EXPECT_EQ(client.counts[vantu_orvanta_event_cursor_state], 0U);
    EXPECT_EQ(service.now(), 0ns);
    service.advance(1ms);
    EXPECT_EQ(service.now(), 1ms);
    client.poll_until(vantu_orvanta_event_cursor_state);
}

TEST(a_manual_clock, brings_every_state_of_the_time_that_passed) {
    service_simulator service(by_hand());
    simulated_client client(service);
    ASSERT_EQ(client.connect(), 0);
    client.open(1);
    service.advance(1s);
    client.poll_until(vantu_orvanta_event_cursor_state, 101);
    EXPECT_EQ(client.counts[vantu_orvanta_event_cursor_state], 101U);
    // With the first state and with that at the full second.
    EXPECT_EQ(client.counts[vantu_orvanta_event_status_motor_current], 2U);
    EXPECT_EQ(client.counts[vantu_orvanta_event_status_power_supply], 2U);
}

TEST(a_manual_clock, expires_a_client_that_is_silent_for_longer_than_it_declared) {
    service_simulator service(by_hand());
    simulated_client client(service);
    ASSERT_EQ(client.connect(5'000'000'000), 0);
    service.advance(5s);
    EXPECT_EQ(service.count().clients, 1U);
    service.advance(100us);
    EXPECT_EQ(service.count().clients, 0U);
    // "client is not connected", under the tag of the request.
    ASSERT_EQ(vantu_orvanta_device_open(client.context(), 1, 77, 0), 0);
    client.poll_until(vantu_orvanta_event_error);
    EXPECT_EQ(client.last.tag, 77);
    EXPECT_EQ(client.last.payload[0], 176);
}

TEST(a_manual_clock, holds_what_is_delayed_until_its_time) {
    service_simulator service(by_hand());
    simulated_client client(service);
    ASSERT_EQ(client.connect(), 0);
    client.poll();
    service.command("delay 250@op=19");
    ASSERT_EQ(vantu_orvanta_device_open(client.context(), 1, 9, 0), 0);
    wait_until([&] { return service.happened("delay") == 1; }, [&] { client.poll(); });
    service.advance(249ms);
    client.poll();
    EXPECT_EQ(client.counts[vantu_orvanta_event_device_opened], 0U);
    service.advance(1ms);
    client.poll_until(vantu_orvanta_event_device_opened);
}

TEST(a_manual_clock, moves_in_steps_as_at_once) {
    const auto count_after = [](std::chrono::nanoseconds step) {
        service_simulator service(by_hand());
        simulated_client client(service);
        EXPECT_EQ(client.connect(), 0);
        client.open(1);
        for (std::chrono::nanoseconds passed{0}; passed < 300ms; passed += step) {
            service.advance(step);
            client.poll();
        }
        return service.count().sent;
    };
    EXPECT_EQ(count_after(300ms), count_after(1ms));
    EXPECT_EQ(count_after(300ms), count_after(100us));
}

TEST(a_manual_clock, is_what_advance_and_serve_waiting_need_and_start_refuses) {
    service_simulator by_itself({});
    EXPECT_THROW(by_itself.advance(1s), std::logic_error);
    EXPECT_THROW((void)by_itself.serve_waiting(), std::logic_error);
    service_simulator service(by_hand());
    EXPECT_THROW(service.start(), std::logic_error);
    EXPECT_THROW(service.advance(-1ns), std::invalid_argument);
    EXPECT_EQ(service.serve_waiting(), 0U);
}

TEST(a_manual_clock, ends_with_a_goodbye_at_stop) {
    service_simulator service(by_hand());
    simulated_client client(service);
    ASSERT_EQ(client.connect(), 0);
    client.poll();
    service.stop();
    EXPECT_EQ(service.count().clients, 0U);
    client.poll_until(vantu_orvanta_event_disconnected);
}

} // namespace
} // namespace orvanta_tests
