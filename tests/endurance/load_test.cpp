// As many clients as there are local ports, each with a device that streams at 1000 Hz, and one client more.
// ORVANTA_LOAD_SECONDS sets for how long:
//
//     ORVANTA_LOAD_SECONDS=60 ctest --preset release -R '^load_test' -V
#include "app/support/child_process.hpp"
#include "endurance/running_client.hpp"

#include <chrono>
#include <cstdio>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

namespace orvanta_tests {
namespace {

// 54321 to 54336.
constexpr std::size_t local_ports = 16;
constexpr std::uint64_t rate_hz = LOAD_RATE_HZ;
constexpr std::uint64_t default_seconds = 2;
// A service that is kept from running for half a second holds the states of that time at once, 17 MiB; a
// sanitizer keeps what was freed on top.
constexpr std::uint64_t most_growth_kib = 1024 * MOST_GROWTH_MIB;
constexpr std::uint64_t patience_ns = 5'000'000'000;

// The service as a program, with its console at a pipe.
class loaded_service {
  public:
    loaded_service()
        : program_({SIMULATOR_PROGRAM, "--interactive", "--palmetron", "0", "--orvanta3",
                    std::to_string(local_ports), "--rate", std::to_string(rate_hz)},
                   attachment::pipes) {
        program_.read_until("listening on port 54320\n");
    }

    ~loaded_service() {
        program_.type("quit\n");
        EXPECT_EQ(program_.wait(), ending{0});
    }
    loaded_service(const loaded_service&) = delete;
    loaded_service& operator=(const loaded_service&) = delete;

    // The datagrams that it has sent so far.
    std::uint64_t sent() {
        program_.type("status\n");
        program_.read_until("datagrams received ");
        program_.read_until(", sent ");
        const std::uint64_t count = std::stoull(program_.read_until(";"));
        program_.read_until("\nfaults 0\n");
        return count;
    }

    [[nodiscard]] double processor_seconds() const {
        std::string text = read("stat");
        // The fields after the program's name, which ends with a bracket: the state is field 3.
        std::istringstream fields(text.substr(text.rfind(')') + 2));
        const std::vector<std::string> words{std::istream_iterator<std::string>(fields), {}};
        constexpr std::size_t user_time = 14 - 3;
        constexpr std::size_t system_time = 15 - 3;
        return static_cast<double>(std::stoull(words.at(user_time)) + std::stoull(words.at(system_time))) /
               static_cast<double>(::sysconf(_SC_CLK_TCK));
    }

    [[nodiscard]] std::uint64_t resident_kib() const {
        const std::string text = read("status");
        return std::stoull(text.substr(text.find("VmRSS:") + 6));
    }

  private:
    [[nodiscard]] std::string read(const char* what) const {
        std::ifstream file("/proc/" + std::to_string(program_.id()) + "/" + what);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    child_process program_;
};

class sixteen_clients : public testing::Test {
  protected:
    void SetUp() override {
        vantu_orvanta_init();
        for (std::size_t i = 0; i < local_ports; ++i) {
            clients.push_back(std::make_unique<running_client>());
            ASSERT_EQ(clients.back()->connect(patience_ns), 0);
        }
    }

    [[nodiscard]] static std::uint32_t device_of(std::size_t place) {
        return static_cast<std::uint32_t>(place + 1);
    }

    void all(const char* what, const std::function<bool(std::size_t place)>& holds, std::uint64_t seconds) {
        for (std::size_t i = 0; i < clients.size(); ++i) {
            wait_until(
                what, [&] { return holds(i) || clients[i]->thread_result() != 0; }, seconds + 60);
            EXPECT_EQ(clients[i]->thread_result(), 0U) << "client " << i;
        }
    }

    loaded_service service; // outlives the clients
    std::vector<std::unique_ptr<running_client>> clients;
};

TEST_F(sixteen_clients, leave_no_port_for_the_next_until_one_of_them_ends) {
    running_client late;
    EXPECT_EQ(late.connect(patience_ns), vantu_orvanta_socket_bind_failed);
    EXPECT_EQ(late.connect(patience_ns), vantu_orvanta_socket_bind_failed);
    clients[5].reset();
    EXPECT_EQ(late.connect(patience_ns), 0);
}

TEST_F(sixteen_clients, with_a_fast_stream_each_lose_no_datagram) {
    const std::uint64_t seconds = number_from("ORVANTA_LOAD_SECONDS", default_seconds);
    const std::uint64_t sent_before = service.sent();
    for (std::size_t i = 0; i < clients.size(); ++i) {
        ASSERT_EQ(clients[i]->ask_to_open(device_of(i)), 0);
    }
    all(
        "the first states", [&](std::size_t i) { return clients[i]->states > 0; }, 0);
    const auto begun = std::chrono::steady_clock::now();
    const double worked_before = service.processor_seconds();
    const std::uint64_t memory_before = service.resident_kib();
    all(
        "all states", [&](std::size_t i) { return clients[i]->states >= rate_hz * seconds; }, seconds);
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - begun;
    const double worked = service.processor_seconds() - worked_before;
    const std::uint64_t memory = service.resident_kib();

    for (std::size_t i = 0; i < clients.size(); ++i) {
        ASSERT_EQ(clients[i]->ask_to_close(device_of(i)), 0);
    }
    // All that was sent before this answer has come before it, or never will.
    all(
        "the answers", [&](std::size_t i) { return clients[i]->closed == device_of(i); }, 0);
    std::uint64_t received = 0;
    for (std::size_t i = 0; i < clients.size(); ++i) {
        EXPECT_EQ(clients[i]->opened, device_of(i));
        received += clients[i]->states;
    }
    // Each state goes out in a datagram, which once a second brings more; each client had two answers.
    const std::uint64_t sent = service.sent() - sent_before - 2 * clients.size();
    EXPECT_EQ(sent - received, 0U);
    EXPECT_LE(memory, memory_before + most_growth_kib);
    std::printf(
        "%zu clients at %llu Hz for %.2f s: %llu states sent, %llu lost; the service took %.1f %% of a "
        "processor, %llu KiB at the start, %llu KiB at the end\n",
        clients.size(), static_cast<unsigned long long>(rate_hz), passed.count(),
        static_cast<unsigned long long>(sent), static_cast<unsigned long long>(sent - received),
        100 * worked / passed.count(), static_cast<unsigned long long>(memory_before),
        static_cast<unsigned long long>(memory));
}

} // namespace
} // namespace orvanta_tests
