// A long run of the client library beside the simulated service at 1000 Hz: what is delivered, and whether
// memory and handles stay what they were. See docs/platforms.md.
#include "network/socket.hpp"
#include "soak/process_figures.hpp"
#include "soak/streaming_session.hpp"
#include "support/open_handles.hpp"
#include "vantu/orvanta/common/format.hpp"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <thread>

namespace {

using namespace orvanta_tests;
using namespace std::chrono_literals;
using steady = std::chrono::steady_clock;

constexpr double rate_hz = 1000;
// The growth that a process may show after its start: pages of stacks and heaps touched for the first time.
constexpr std::size_t memory_allowed = std::size_t{1} << 20U;
// The handles that may be open beyond the first look: the system opens some late or for the length of a call.
constexpr std::size_t handles_allowed = 4;

struct reading {
    double seconds; // since the device was opened
    std::uint64_t sent;
    std::uint64_t received;
    std::size_t memory;
    std::size_t handles;
    double share; // of a processor, of the polling thread since the device was opened
};

// The handles that stay open: the system opens others for the length of a call, which a single count may
// meet.
std::size_t lasting_handles() {
    constexpr int looks = 10;
    std::size_t least = open_handles();
    for (int look = 1; look < looks; ++look) {
        least = std::min(least, open_handles());
    }
    return least;
}

void print(const std::string& line) {
    std::fputs(line.c_str(), stdout);
    std::fflush(stdout);
}

void print(const reading& now) {
    print(vantu::orvanta::formatted("{:8.1f} {:10} {:10} {:8.1f} {:12} {:8} {:8.2f}\n", now.seconds, now.sent,
                                    now.received,
                                    static_cast<double>(now.received) / std::max(now.seconds, 1e-9),
                                    now.memory / 1024, now.handles, 100 * now.share));
}

// Sleeps, and stops everything when the polling thread has ended.
void wait_until(steady::time_point deadline, const streaming_client& client) {
    while (steady::now() < deadline) {
        std::this_thread::sleep_for(std::min<steady::duration>(deadline - steady::now(), 100ms));
        client.check_polling();
    }
}

double seconds_since(steady::time_point begin) {
    return std::chrono::duration<double>(steady::now() - begin).count();
}

void watch_idle(steady::duration length, const streaming_client& client) {
    const steady::time_point begin = steady::now();
    const std::int64_t before_ns = client.polling_time_ns();
    wait_until(begin + length, client);
    const double share =
        static_cast<double>(client.polling_time_ns() - before_ns) / 1e9 / seconds_since(begin);
    print(vantu::orvanta::formatted("idle polling thread: {:.2f} % of a processor in {:.1f} s\n", 100 * share,
                                    seconds_since(begin)));
}

// Streams for so long. True when memory and handles have stayed and the states have come.
bool watch_streaming(steady::duration length, const running_service& service, streaming_client& client) {
    client.open_device();
    const steady::time_point begin = steady::now();
    const std::int64_t begin_ns = client.polling_time_ns();
    const auto read = [&] {
        const double seconds = seconds_since(begin);
        const double polled = static_cast<double>(client.polling_time_ns() - begin_ns) / 1e9;
        return reading{seconds,         service.states_sent(), client.states_received(),
                       memory_in_use(), lasting_handles(),     polled / std::max(seconds, 1e-9)};
    };
    print(" seconds       sent  delivered    per s   memory KiB  handles   poll %\n");
    // The first tenth, at most five seconds, in which everything is used for the first time.
    wait_until(begin + std::min<steady::duration>(length / 10, 5s), client);
    const reading first = read();
    print(first);
    for (steady::time_point next = begin + 60s; next < begin + length; next += 60s) {
        wait_until(next, client);
        print(read());
    }
    wait_until(begin + length, client);
    client.close_device();
    const reading last = read();
    print(last);

    // The closing is confirmed after the last state.
    const bool delivered = last.received > 0 && last.received == last.sent;
    const bool steady_memory = last.memory <= first.memory + memory_allowed;
    const bool steady_handles = last.handles <= first.handles + handles_allowed;
    print(vantu::orvanta::formatted("sent {}, delivered {}; memory {}; handles {}\n", last.sent,
                                    last.received, steady_memory ? "constant" : "GROWN",
                                    steady_handles ? "constant" : "GROWN"));
    if (!delivered) {
        print("not every state was delivered once\n");
    }
    return delivered && steady_memory && steady_handles;
}

bool run(double seconds) {
    const auto length = std::chrono::duration_cast<steady::duration>(std::chrono::duration<double>(seconds));
    vantu::orvanta::socket_startup();
    const running_service service(rate_hz);
    streaming_client client(service.port());
    watch_idle(std::clamp<steady::duration>(length / 4, 100ms, 10s), client);
    return watch_streaming(length, service, client);
}

} // namespace

int main(int argument_count, char** arguments) {
    try {
        const double seconds = argument_count == 2 ? std::strtod(arguments[1], nullptr) : 0;
        if (!(seconds > 0 && seconds <= 86'400)) {
            std::fputs("usage: orvanta-soak SECONDS     (more than 0, at most a day)\n", stderr);
            return 2;
        }
        return run(seconds) ? 0 : 1;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "orvanta-soak: %s\n", failure.what());
        return 1;
    }
}
