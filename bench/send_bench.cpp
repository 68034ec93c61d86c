// Sending: a request, with and without a handler, beside a bare sendto of the same bytes.
#include "bench_service.hpp"
#include "paired.hpp"

#include <sys/socket.h>

namespace vantu::orvanta::bench {
namespace {

constexpr int requests_a_batch = 200;

// An orientation request of device 1 with tag 1: 15 bytes.
const datagram request_bytes{0xE9, 0x9E, 1, 0, 0, 0, 0xFF, 47, 4, 0, 1, 1, 0, 0, 0};

// after() runs untimed after each batch of ours.
template <typename Request, typename After>
void measure(benchmark::State& state, double target_ratio, connected_client& ours, Request request,
             After after) {
    const bare_socket bare;
    const bare_socket receiver;
    run_pairs(
        state, target_ratio,
        [&] {
            ours.service.drain();
            const double begin = now_ns();
            for (int i = 0; i < requests_a_batch; ++i) {
                request();
            }
            const double each_ns = (now_ns() - begin) / requests_a_batch;
            after();
            return each_ns;
        },
        [&] {
            receiver.drain();
            const double begin = now_ns();
            for (int i = 0; i < requests_a_batch; ++i) {
                sendto(bare.descriptor(), request_bytes.data(), request_bytes.size(), 0,
                       reinterpret_cast<const sockaddr*>(&receiver.address()), receiver.address_length());
            }
            return (now_ns() - begin) / requests_a_batch;
        });
}

void request_without_handler(benchmark::State& state) {
    connected_client ours;
    int failed = 0;
    measure(
        state, 1.04, ours, [&] { failed += vantu_orvanta_orientation_get(ours.owner.context(), 1, 1) != 0; },
        [] {});
    if (failed != 0) {
        state.SkipWithError("a request failed");
    }
}

// After each batch a made-up reply is dispatched under every tag, so that all tags are free again.
void request_with_handler(benchmark::State& state) {
    connected_client ours;
    std::uint64_t answered = 0;
    int failed = 0;
    vantu_orvanta_event reply{};
    reply.event_type = vantu_orvanta_event_orientation;
    reply.device_id = 1;
    measure(
        state, 1.05, ours,
        [&] {
            failed += ours.owner.orientation_get(1, [&answered](client&, const auto&) { ++answered; }) != 0;
        },
        [&] {
            for (unsigned tag = 1; tag <= 255; ++tag) {
                reply.tag = static_cast<std::uint8_t>(tag);
                ours.owner.dispatch(reply);
            }
        });
    if (failed != 0 || answered != static_cast<std::uint64_t>(state.iterations()) * requests_a_batch) {
        state.SkipWithError("a request failed or was not answered");
    }
}

BENCHMARK(request_without_handler)->UseManualTime()->Iterations(1500);
BENCHMARK(request_with_handler)->UseManualTime()->Iterations(1500);

} // namespace
} // namespace vantu::orvanta::bench
