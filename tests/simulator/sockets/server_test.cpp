// The simulation on real sockets, within the test's own process.
#include "simulator/sockets/server.hpp"
#include "support/library_sockets.hpp"

#include "simulator/fixtures/test_client.hpp"
#include "simulator/simulation/verbs.hpp"
#include "vantu/orvanta/common/log.hpp"
#include "vantu/orvanta/simulator.hpp"

#include <gmock/gmock.h>
#include <span>
#include <stdexcept>

namespace orvanta_tests {
namespace {

using namespace vantu::orvanta;
using namespace vantu::orvanta::simulator;
using testing::HasSubstr;

// The port that follows the last colon of a socket's address text.
std::string port_of(socket_handle socket) {
    const std::string text = stringify_socket(socket);
    return text.c_str() + text.rfind(':') + 1;
}

bool has_ipv6() {
    opened_socket probe = open_bound_socket("::1", "0");
    close_socket(probe.socket);
    return probe.status == socket_status::ok;
}

std::vector<std::string> hosts() {
    std::vector<std::string> names{"127.0.0.1"};
    if (has_ipv6()) {
        names.emplace_back("::1");
    }
    return names;
}

// Serves on a thread until the test ends.
class running_server {
  public:
    running_server() { simulated_.start(); }

    void stop() { simulated_.stop(); }
    [[nodiscard]] const std::string& port() const { return simulated_.port(); }

  private:
    service_simulator simulated_{{}};
};

class quiet : public testing::Test {
  protected:
    // Warnings of the socket layer about taken ports are expected here.
    void SetUp() override {
        set_log_sink([](std::uint64_t, log_level, const std::string&, std::uint64_t, const std::string&) {});
    }
    void TearDown() override { set_log_sink({}); }
};

using listening = quiet;
using serving = quiet;

TEST_F(listening, takes_one_free_port_on_every_loopback_address_of_the_system) {
    const listeners opened("0");
    ASSERT_EQ(opened.sockets().size(), hosts().size());
    EXPECT_NE(opened.port(), "0");
    for (const socket_handle socket : opened.sockets()) {
        EXPECT_EQ(port_of(socket), opened.port());
    }
}

TEST_F(listening, on_a_port_that_is_held_on_any_of_the_addresses_is_refused_with_one_line) {
    for (const std::string& host : hosts()) {
        opened_socket holder = open_bound_socket(host, "0");
        ASSERT_EQ(holder.status, socket_status::ok);
        const std::string port = port_of(holder.socket);
        try {
            const listeners opened(port);
            ADD_FAILURE() << "took a held port of " << host;
        } catch (const std::runtime_error& refused) {
            EXPECT_EQ(refused.what(), "cannot listen on " + host + " port " + port +
                                          ": another program holds it, or it is not allowed");
        }
        close_socket(holder.socket);
    }
}

TEST_F(listening, gives_its_port_back_at_the_end) {
    std::string port;
    {
        const listeners first("0");
        port = first.port();
        EXPECT_THROW(listeners{port}, std::runtime_error);
    }
    EXPECT_EQ(listeners(port).port(), port);
}

TEST_F(serving, answers_on_every_address) {
    running_server tested;
    for (const std::string& host : hosts()) {
        test_client client(host, tested.port());
        client.send(datagram({connect_operation(0x11)}));
        const bytes answer = client.receive();
        ASSERT_GT(answer.size(), 13U) << host;
        EXPECT_EQ(answer[6 + 1], 16);
        EXPECT_EQ(answer[answer.size() - 12], 4);
        EXPECT_EQ(answer[answer.size() - 9], 0x11);
        client.send(datagram({{0xFF, 0x05, 0x00, 0x00, 0x00}}));
        EXPECT_EQ(client.receive(), datagram({{0xFF, 0x06, 0x00, 0x00, 0x00}}));
    }
}

TEST_F(serving, streams_to_several_clients_at_a_time) {
    running_server tested;
    test_client one("127.0.0.1", tested.port());
    test_client other("127.0.0.1", tested.port());
    for (test_client* client : {&one, &other}) {
        client->send(datagram({connect_operation(0)}));
        client->send(datagram({{0xFF, 0x12, 0x06, 0x00, 0x01, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00}}));
    }
    for (test_client* client : {&one, &other}) {
        bytes last = client->receive_until(33);
        for (int i = 0; i < 5; ++i) {
            const bytes next = client->receive_until(33);
            EXPECT_NE(next, last);
            last = next;
        }
    }
}

TEST_F(serving, says_goodbye_to_all_clients_at_the_end) {
    running_server tested;
    test_client one("127.0.0.1", tested.port());
    test_client other(hosts().back(), tested.port());
    for (test_client* client : {&one, &other}) {
        client->send(datagram({connect_operation(0)}));
        EXPECT_FALSE(client->receive().empty());
    }
    tested.stop();
    for (test_client* client : {&one, &other}) {
        EXPECT_EQ(client->receive(), datagram({{0xFF, 0x06, 0x00, 0x00, 0x00}}));
    }
}

TEST_F(serving, goes_on_when_a_client_is_gone_without_a_goodbye) {
    running_server tested;
    {
        test_client gone("127.0.0.1", tested.port());
        gone.send(datagram({connect_operation(0)}));
        EXPECT_FALSE(gone.receive().empty());
        gone.send(datagram({{0xFF, 0x12, 0x06, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00}}));
        EXPECT_FALSE(gone.receive_until(33).empty());
    }
    // States go to the closed port all the while.
    test_client stays("127.0.0.1", tested.port());
    stays.send(datagram({connect_operation(0)}));
    EXPECT_FALSE(stays.receive().empty());
    stays.send(datagram({{0xFF, 0x12, 0x06, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00}}));
    for (int i = 0; i < 20; ++i) {
        EXPECT_FALSE(stays.receive_until(33).empty());
    }
}

TEST_F(serving, answers_a_burst_of_requests_one_by_one) {
    running_server tested;
    test_client client("127.0.0.1", tested.port());
    client.send(datagram({connect_operation(0)}));
    EXPECT_FALSE(client.receive().empty());
    for (std::uint8_t tag = 1; tag <= 200; ++tag) {
        client.send(datagram({{0xFF, 0x2F, 0x04, 0x00, tag, 0x01, 0x00, 0x00, 0x00}}));
    }
    for (std::uint8_t tag = 1; tag <= 200; ++tag) {
        // The device was not opened.
        EXPECT_EQ(client.receive(), datagram({{0xFF, 0xF0, 0x05, 0x00, tag, 0x01, 0x00, 0x00, 0x00, 0xB1}}));
    }
}

// Serves with a clock moved by hand, whenever it is told to.
class hand_served : public quiet {
  protected:
    explicit hand_served(double rate_hz = 100) : simulated(one_orvanta3(rate_hz)) {}

    static simulation_settings one_orvanta3(double rate_hz) {
        simulation_settings made;
        made.devices = make_devices(1, 0);
        made.rate_hz = rate_hz;
        return made;
    }

    // Serves until that many datagrams have come.
    void serve(std::size_t count) {
        while (count > 0) {
            count -= std::min(count, tested.serve_waiting());
        }
    }

    std::int64_t now = 0;
    simulation simulated;
    listeners sockets{"0"};
    server tested{simulated, sockets, [this] { return now; }};
};

TEST_F(hand_served, nothing_comes_before_the_clock_is_moved_and_all_that_is_due_after_it) {
    test_client client("127.0.0.1", sockets.port());
    client.send(datagram({connect_operation(0)}));
    client.send(datagram({{0xFF, 0x12, 0x06, 0x00, 0x01, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00}}));
    serve(2);
    EXPECT_FALSE(client.receive_until(19).empty());
    EXPECT_EQ(tested.serve_waiting(), 0U);
    EXPECT_EQ(simulated.counters().sent, 2U);
    now = 1'000'000'000;
    EXPECT_EQ(tested.serve_waiting(), 0U);
    // The first at once, the last when the second is over.
    EXPECT_EQ(simulated.counters().sent, 103U);
    for (int i = 0; i < 101; ++i) {
        EXPECT_EQ(client.receive().at(7), 33);
    }
}

TEST_F(hand_served, a_datagram_is_taken_at_the_time_of_the_clock) {
    test_client client("127.0.0.1", sockets.port());
    client.send(datagram({connect_operation(0, 5'000'000'000)}));
    serve(1);
    now = 4'000'000'000;
    client.send(datagram({{0xFF, 0x01, 0x00, 0x00, 0x00}}));
    serve(1);
    now = 8'000'000'000;
    tested.serve_waiting();
    EXPECT_EQ(simulated.clients().size(), 1U);
    now = 9'000'200'000;
    tested.serve_waiting();
    EXPECT_TRUE(simulated.clients().empty());
}

class on_a_slow_machine : public hand_served {
  protected:
    static constexpr double rate_hz = 10'000;
    on_a_slow_machine() : hand_served(rate_hz) {}
};

TEST_F(on_a_slow_machine, clients_are_heard_while_it_catches_up) {
    test_client client("127.0.0.1", sockets.port());
    client.send(datagram({connect_operation(0), {0xFF, 0x12, 0x06, 0x00, 0x01, 0x01, 0, 0, 0, 0, 0}}));
    serve(1);
    std::size_t sent = 0;
    tested.tell([&](const wire_datagram& what) {
        if (what.way == communication::direction::to_client) {
            now += 1'000'000; // ten times the interval of the states
            ++sent;
        }
    });
    now += 400'000'000;
    EXPECT_FALSE(tested.catch_up());
    EXPECT_EQ(sent, 100U) << "what fell due in 10 ms";
    for (int i = 0; i < 3; ++i) {
        client.send(datagram({{0xFF, 0x01, 0x00, 0x00, 0x00}}));
    }
    std::size_t taken = 0;
    while (taken == 0) {
        taken = tested.serve_waiting();
    }
    EXPECT_EQ(taken, 1U) << "then what waits beside the sockets has its turn";
}

// A simulation at a time, and a clock that goes on from there.
class a_steady_clock : public testing::Test {
  protected:
    a_steady_clock() { simulated.advance_to(3'000'000'000); }

    std::int64_t source{7'000'000'000};
    simulation simulated{{}};
};

TEST_F(a_steady_clock, goes_on_from_the_time_of_the_simulation) {
    const clock_function clock = make_steady_clock(simulated, [this] { return source; });
    EXPECT_EQ(clock(), 3'000'000'000);
    source += 1;
    EXPECT_EQ(clock(), 3'000'000'001);
}

TEST_F(a_steady_clock, leaves_out_a_lag_beyond_half_a_second) {
    const clock_function clock = make_steady_clock(simulated, [this] { return source; });
    source += 500'000'000;
    EXPECT_EQ(clock(), 3'500'000'000);
    source += 60'000'000'000;
    EXPECT_EQ(clock(), 3'500'000'000);
    simulated.advance_to(3'400'000'000);
    EXPECT_EQ(clock(), 3'500'000'000);
    source += 400'000'000;
    EXPECT_EQ(clock(), 3'900'000'000);
}

TEST_F(hand_served, forges_from_an_address_that_is_not_the_service_s) {
    for (const std::string& host : hosts()) {
        opened_socket client = open_bound_socket(host, "0");
        ASSERT_EQ(client.status, socket_status::ok);
        const bytes connect = datagram({connect_operation(0)});
        ASSERT_EQ(send_bytes(client.socket, std::as_bytes(std::span(connect)),
                             resolve_address(host, sockets.port()).address),
                  socket_status::ok);
        serve(1);
        ASSERT_TRUE(run_verb(simulated, "inject 2").good);
        tested.send_outgoing();
        // The acceptance, then the forged ones.
        std::vector<std::string> senders;
        while (senders.size() < 3) {
            buffered_record record;
            if (recv_packet(client.socket, record) == socket_status::ok) {
                senders.push_back(stringify_addr({record.from_length, record.from}));
            }
        }
        EXPECT_THAT(senders[0], HasSubstr(sockets.port()));
        EXPECT_NE(senders[1], senders[0]);
        EXPECT_EQ(senders[1], senders[2]);
        EXPECT_THAT(senders[1], HasSubstr(host));
        simulated.restart();
        close_socket(client.socket);
    }
}

} // namespace
} // namespace orvanta_tests
