// The service core on real sockets, within the test's own process.
#include "simulator/server.hpp"

#include "simulator/test_client.hpp"
#include "vantu/orvanta/common/diagnostics/log.hpp"

#include <atomic>
#include <gmock/gmock.h>
#include <stdexcept>
#include <thread>

namespace simulator_tests {
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
    explicit running_server(service_settings settings = {})
        : core_(std::move(settings), make_devices(1, 1)),
          thread_([this] { server(core_, sockets_).serve([this] { return stop_.load(); }); }) {}
    ~running_server() { stop(); }

    void stop() {
        stop_ = true;
        if (thread_.joinable()) {
            thread_.join();
        }
    }
    [[nodiscard]] const std::string& port() const { return sockets_.port(); }

  private:
    service core_;
    listeners sockets_{"0"};
    std::atomic<bool> stop_{false};
    std::thread thread_;
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

} // namespace
} // namespace simulator_tests
