// An hour of the simulation's time: keep-alives, an expiry and streams, each counted, in a moment.
#include "network/socket.hpp"
#include "simulator/fixtures/simulation_fixture.hpp"
#include "simulator/fixtures/test_client.hpp"
#include "support/library_sockets.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"
#include "vantu/orvanta/common/platform.hpp"
#include "vantu/orvanta/simulator.hpp"

#include <cstdio>
#include <ctime>
#include <gmock/gmock.h>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta;

constexpr std::uint64_t keep_alive_time = 5'000'000'000;

// The real time that passes until the end of its life, and the processor's share, as a line of the test's
// output.
class stopwatch {
  public:
    explicit stopwatch(const char* what) : what_(what) {}
    ~stopwatch() {
        const auto passed = static_cast<double>(platform::steady_now_ns() - begin_) * 1e-9;
        const auto worked = static_cast<double>(std::clock() - worked_before_) / CLOCKS_PER_SEC;
        std::printf("an hour %s took %.3f s, %.3f s of the processor\n", what_, passed, worked);
    }
    stopwatch(const stopwatch&) = delete;
    stopwatch& operator=(const stopwatch&) = delete;

  private:
    const char* what_;
    std::int64_t begin_{platform::steady_now_ns()};
    std::clock_t worked_before_{std::clock()};
};

TEST(an_hour, without_sockets_has_every_state_and_one_expiry) {
    simulation_fixture fixture;
    fixture.enter(1, {1}, keep_alive_time);
    fixture.enter(2, {1}, keep_alive_time);
    const std::uint64_t sent_before = fixture.tested.counters().sent;
    std::size_t to_the_first = 0;
    std::size_t to_the_silent = 0;
    {
        const stopwatch watch("without sockets");
        for (int passed = 0; passed < 3600; ++passed) {
            fixture.send(1, keep_alive);
            for (const sent& one : fixture.wait(ns_per_second)) {
                (one.to == 1 ? to_the_first : to_the_silent) += 1;
            }
        }
    }
    EXPECT_EQ(to_the_first, 360'000U);
    // For the whole of its keep-alive time, from a tick before the hour on.
    EXPECT_EQ(to_the_silent, 500U);
    EXPECT_EQ(fixture.tested.counters().sent - sent_before, 360'500U);
    EXPECT_THAT(fixture.lines, testing::ElementsAre(testing::HasSubstr("forgotten after its silence")));
}

// A client of bare datagrams that takes what is there.
class draining_client {
  public:
    explicit draining_client(const std::string& port)
        : socket_(open_bound_socket("127.0.0.1", "0").socket),
          service_(resolve_address("127.0.0.1", port).address) {}
    ~draining_client() { close_socket(socket_); }
    draining_client(const draining_client&) = delete;
    draining_client& operator=(const draining_client&) = delete;

    void send(const bytes& content) {
        EXPECT_EQ(send_bytes(socket_, std::as_bytes(std::span(content)), service_), socket_status::ok);
    }

    // How many of the datagrams that are there now begin with the operation.
    std::size_t take(std::uint8_t code) {
        std::size_t count = 0;
        for (record_.buffer.reset(); recv_packet(socket_, record_) == socket_status::ok;
             record_.buffer.reset()) {
            count += record_.buffer.unread()[7] == std::byte{code} ? 1 : 0;
        }
        return count;
    }

  private:
    socket_handle socket_;
    endpoint service_;
    buffered_record record_;
};

TEST(an_hour, on_sockets_loses_no_state_and_forgets_the_silent_client) {
    service_simulator::settings settings;
    settings.manual_clock = true;
    settings.rate_hz = 10; // each state costs the system a sending and a receipt
    service_simulator service(settings);
    draining_client lively(service.port());
    draining_client silent(service.port());
    const auto serve = [&service](std::size_t count) {
        while (count > 0) {
            count -= std::min(count, service.serve_waiting());
        }
    };
    for (draining_client* one : {&lively, &silent}) {
        one->send(datagram({connect_operation(0, keep_alive_time)}));
        one->send(open_request(1, 1));
        serve(2);
    }
    EXPECT_EQ(lively.take(19), 1U);
    std::size_t states = 0;
    std::size_t states_of_the_silent = 0;
    {
        const stopwatch watch("on sockets");
        for (int passed = 0; passed < 3600; ++passed) {
            lively.send(keep_alive);
            serve(1);
            service.advance(std::chrono::seconds(1));
            states += lively.take(33);
            states_of_the_silent += silent.take(33);
        }
    }
    EXPECT_EQ(states, 36'001U);
    EXPECT_EQ(states_of_the_silent, 51U);
    EXPECT_EQ(service.count().clients, 1U);
    EXPECT_EQ(service.count().received, 4U + 3600U);
    EXPECT_EQ(service.now(), std::chrono::hours(1));
}

} // namespace
} // namespace orvanta_tests
