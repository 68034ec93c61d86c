// Time that a test moves by hand, with the client library at the other end.
#include "simulator_library/simulated_client.hpp"

#include <chrono>
#include <cstdio>
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
    EXPECT_THROW(service.serve([] { return true; }), std::logic_error);
    EXPECT_THROW(service.advance(-1ns), std::invalid_argument);
    EXPECT_THROW(service.advance(24h + 1ns), std::invalid_argument);
    EXPECT_THROW(service.advance(std::chrono::nanoseconds::max()), std::invalid_argument);
    EXPECT_EQ(service.now(), 0ns);
    EXPECT_EQ(service.serve_waiting(), 0U);
}

TEST(a_manual_clock, passes_over_the_time_in_which_nothing_is_due) {
    service_simulator::settings wanted = by_hand();
    wanted.rate_hz = 0;
    service_simulator service(wanted);
    simulated_client client(service);
    ASSERT_EQ(client.connect(0), 0);
    // A step of 100 ms for each would be a hundred times as much work as the tests have time for.
    for (int day = 0; day < 100'000; ++day) {
        service.advance(service_simulator::longest_advance);
    }
    EXPECT_EQ(service.now(), 100'000 * 24h);
    EXPECT_EQ(service.count().clients, 1U);
}

TEST(a_manual_clock, forgets_a_client_at_its_time_on_a_long_way) {
    service_simulator service(by_hand());
    simulated_client client(service);
    ASSERT_EQ(client.connect(3'600'000'000'000), 0);
    service.advance(1h);
    EXPECT_EQ(service.count().clients, 1U);
    service.advance(1h);
    EXPECT_EQ(service.count().clients, 0U);
}

// The client library's own clock is the system's: in an hour of the service's time it sends no keep-alives
// but those of the moment that passes meanwhile.
TEST(a_manual_clock, keeps_a_client_for_an_hour_that_asks_in_time) {
    service_simulator::settings wanted = by_hand();
    wanted.rate_hz = 10;
    service_simulator service(wanted);
    simulated_client client(service);
    ASSERT_EQ(client.connect(), 0);
    client.open(1);
    const auto begin = std::chrono::steady_clock::now();
    for (int passed = 0; passed < 900; ++passed) {
        ASSERT_EQ(vantu_orvanta_orientation_get(client.context(), 1, 1), 0);
        client.poll_until(vantu_orvanta_event_orientation, static_cast<std::size_t>(passed) + 1);
        service.advance(4s);
        client.poll();
    }
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
    std::printf("an hour with ten states a second and 900 requests took %.2f s\n", took.count());
    EXPECT_EQ(service.count().clients, 1U);
    EXPECT_EQ(client.counts[vantu_orvanta_event_cursor_state], 36'001U);
    service.advance(5s + 100us);
    EXPECT_EQ(service.count().clients, 0U);
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
