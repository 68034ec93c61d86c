// The service killed and started again under a running client, on real sockets. ORVANTA_KILLS sets how often:
//
//     ORVANTA_KILLS=200 ctest --preset release -R '^kill_test' -V
#include "endurance/running_client.hpp"
#include "simulator/fixtures/running_simulator.hpp"

#include <chrono>
#include <cstdio>
#include <future>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace orvanta_tests {
namespace {

using namespace std::chrono_literals;
using steady = std::chrono::steady_clock;

constexpr std::uint64_t default_kills = DEFAULT_KILLS;
constexpr std::uint64_t patient_timeout_ns = 2'000'000'000;
constexpr std::uint64_t walk_timeout_ns = 50'000'000;
constexpr std::uint64_t short_timeout_ns = 1'000'000;
constexpr std::uint32_t client_is_not_connected = 176;

class a_service_that_dies : public testing::Test {
  protected:
    void SetUp() override {
        vantu_orvanta_init();
        start();
        reconnect();
    }

    void start() {
        service = std::make_unique<running_simulator>(
            std::vector<std::string>{"--orvanta3", "1", "--palmetron", "0"});
        ASSERT_EQ(service->port(), "54320");
    }

    void kill() {
        service->kill();
        EXPECT_EQ(service->wait_for_end().status, -1);
    }

    // A new client in the old one's place; connected, and with a stream.
    void reconnect() {
        client.reset();
        client = std::make_unique<running_client>();
        ASSERT_EQ(client->connect(patient_timeout_ns), 0);
        open_the_device();
    }

    void open_the_device() {
        asked = steady::now();
        ASSERT_EQ(client->ask_to_open(1), 0);
        wait_until("a state", [&] { return client->states > 0; });
        EXPECT_EQ(client->opened, 1U);
    }

    // Code 8 at the next sign of life; until the service is back, connecting fails with 5.
    void is_killed_and_asked_while_it_is_gone() {
        kill();
        ASSERT_EQ(client->ask_to_open(1), 0);
        wait_until("the thread's end", [&] { return client->thread_result() != 0; });
        EXPECT_EQ(client->thread_result(), std::uint32_t{vantu_orvanta_disconnected_from_service});
        EXPECT_FALSE(client->dismissed);
        running_client hopeful;
        EXPECT_EQ(hopeful.connect(short_timeout_ns), vantu_orvanta_socket_bind_failed);
        start();
    }

    // The stream stops, and the next request is refused with 176; nothing else tells.
    void is_killed_and_started_anew_unseen() {
        kill();
        start();
        ASSERT_EQ(client->ask_to_open(1, 9), 0);
        wait_until("an answer", [&] { return client->refusal != 0 || client->thread_result() != 0; });
        if (client->thread_result() == 0) {
            EXPECT_EQ(client->refusal, client_is_not_connected);
        } else {
            // A keep-alive, due a second after the last request, met the closed port.
            EXPECT_EQ(client->thread_result(), std::uint32_t{vantu_orvanta_disconnected_from_service});
            EXPECT_GE(steady::now() - asked, 1s);
        }
        EXPECT_FALSE(client->dismissed);
    }

    // A goodbye ends the thread and the connection with 3.
    void is_told_to_end() {
        service->terminate();
        EXPECT_EQ(service->wait_for_end().status, 0);
        wait_until("the thread's end", [&] { return client->thread_result() != 0; });
        EXPECT_TRUE(client->dismissed);
        EXPECT_EQ(client->thread_result(), std::uint32_t{vantu_orvanta_invalid_connection_state});
        EXPECT_EQ(client->ask_to_open(1), vantu_orvanta_invalid_connection_state);
        start();
    }

    // The walk through the local ports meets the next service, unless it is at its end by then.
    void hangs_and_is_killed_while_a_client_connects() {
        client.reset();
        service->suspend();
        client = std::make_unique<running_client>();
        const auto begun = steady::now();
        auto attempt = std::async(std::launch::async, [&] { return client->connect(walk_timeout_ns); });
        kill();
        start();
        if (const std::int32_t code = attempt.get(); code != 0) {
            EXPECT_EQ(code, vantu_orvanta_socket_bind_failed);
            EXPECT_GE(steady::now() - begun, 16 * std::chrono::nanoseconds(walk_timeout_ns));
            ASSERT_EQ(client->connect(patient_timeout_ns), 0);
        }
        open_the_device();
    }

    std::unique_ptr<running_simulator> service;
    std::unique_ptr<running_client> client;
    steady::time_point asked; // the last request
};

TEST_F(a_service_that_dies, leaves_its_client_with_the_documented_outcome_and_nothing_behind) {
    const std::uint64_t kills = number_from("ORVANTA_KILLS", default_kills);
    const belongings before = belongings_of_this_process();
    const auto begun = steady::now();
    for (std::uint64_t done = 0; done < kills && !HasFailure(); ++done) {
        SCOPED_TRACE(testing::Message() << "kill " << done);
        switch (done % 4) {
        case 0:
            is_killed_and_asked_while_it_is_gone();
            break;
        case 1:
            is_killed_and_started_anew_unseen();
            break;
        case 2:
            is_told_to_end();
            break;
        default:
            hangs_and_is_killed_while_a_client_connects();
            break;
        }
        reconnect();
        EXPECT_EQ(belongings_of_this_process(), before);
    }
    const std::chrono::duration<double> passed = steady::now() - begun;
    std::printf("%llu kills in %.2f s; %zu descriptors, %zu threads at the end as at the start\n",
                static_cast<unsigned long long>(kills), passed.count(), before.descriptors, before.threads);
}

} // namespace
} // namespace orvanta_tests
