// Receiving: poll and dispatch to a callback, beside the bare system call on the same bytes.
#include "bench_service.hpp"
#include "paired.hpp"

#include <sys/socket.h>

namespace vantu::orvanta::bench {
namespace {

constexpr int datagrams_a_batch = 200;
constexpr int operations_a_datagram = 61;

struct counting_client {
    std::uint64_t states{0};
    connected_client connected{make_callbacks(states)};

    static client::config make_callbacks(std::uint64_t& states) {
        client::config callbacks;
        callbacks.on_cursor_state = [&states](client&, unsigned, const vantu_orvanta_cursor_state&) {
            ++states;
        };
        return callbacks;
    }

    void poll_and_dispatch() {
        vantu_orvanta_event event;
        if (vantu_orvanta_poll(connected.owner.context(), &event) == 0) {
            connected.owner.dispatch(event);
        }
    }
};

ssize_t bare_receive(const bare_socket& from) {
    std::uint8_t bytes[2048];
    sockaddr_storage sender;
    socklen_t length = sizeof(sender);
    const ssize_t received =
        recvfrom(from.descriptor(), bytes, sizeof(bytes), 0, reinterpret_cast<sockaddr*>(&sender), &length);
    benchmark::DoNotOptimize(bytes);
    return received;
}

template <typename Work> double time_batch(int operations, Work work) {
    const double begin = now_ns();
    for (int i = 0; i < operations; ++i) {
        work();
    }
    return (now_ns() - begin) / operations;
}

void one_operation_a_datagram(benchmark::State& state) {
    counting_client ours;
    const bare_socket bare;
    const bare_socket sender;
    const datagram bytes = cursor_states(1);
    std::uint64_t sent = 0;
    run_pairs(
        state, 1.12,
        [&] {
            for (int i = 0; i < datagrams_a_batch; ++i) {
                ours.connected.feed(bytes);
            }
            sent += datagrams_a_batch;
            return time_batch(datagrams_a_batch, [&] { ours.poll_and_dispatch(); });
        },
        [&] {
            for (int i = 0; i < datagrams_a_batch; ++i) {
                sender.send(bytes, bare.address(), bare.address_length());
            }
            return time_batch(datagrams_a_batch, [&] { bare_receive(bare); });
        });
    if (ours.states != sent) {
        state.SkipWithError("not every state reached the callback");
    }
}

void empty_poll(benchmark::State& state) {
    counting_client ours;
    const bare_socket bare;
    run_pairs(
        state, 1.18, [&] { return time_batch(datagrams_a_batch, [&] { ours.poll_and_dispatch(); }); },
        [&] { return time_batch(datagrams_a_batch, [&] { bare_receive(bare); }); });
}

void operation_in_the_buffer(benchmark::State& state) {
    counting_client ours;
    const datagram bytes = cursor_states(operations_a_datagram);
    std::uint64_t sent = 0;
    std::vector<double> measured;
    for ([[maybe_unused]] auto _ : state) {
        ours.connected.feed(bytes);
        sent += operations_a_datagram;
        ours.poll_and_dispatch(); // receives the datagram and takes its first operation
        const double each_ns = time_batch(operations_a_datagram - 1, [&] { ours.poll_and_dispatch(); });
        state.SetIterationTime(each_ns * 1e-9);
        measured.push_back(each_ns);
    }
    state.counters["ours_ns"] = median(measured);
    state.counters["target_ns"] = 50;
    if (ours.states != sent) {
        state.SkipWithError("not every state reached the callback");
    }
}

BENCHMARK(one_operation_a_datagram)->UseManualTime()->Iterations(3000);
BENCHMARK(operation_in_the_buffer)->UseManualTime()->Iterations(20000);
BENCHMARK(empty_poll)->UseManualTime()->Iterations(3000);

} // namespace
} // namespace vantu::orvanta::bench
