// Shows that the watch survives the failures of services, beside a simulated one that is told to fail.
#include "watch.hpp"

#include <chrono>
#include <cstddef>
#include <cstdio>
#include <functional>
#include <vantu/orvanta/orvanta.h>
#include <vantu/orvanta/simulator.hpp>

namespace {

using vantu::orvanta::service_simulator;

constexpr std::uint64_t a_millisecond_ns = 1'000'000;

int failures = 0;

// Turns the watch until the condition holds, for 20 s at most.
void expect(watch& tested, const char* what, const std::function<bool()>& condition) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) {
            std::printf("FAILED: %s\n", what);
            ++failures;
            return;
        }
        tested.turn();
        vantu_orvanta_sleep(a_millisecond_ns);
    }
    std::printf("ok: %s\n", what);
}

} // namespace

int main() {
    vantu_orvanta_init();
    service_simulator::settings wanted;
    wanted.palmetron_count = 0;
    wanted.seed = 7; // brings the same losses back
    service_simulator service(wanted);
    service.start();
    watch tested(service.port());
    std::size_t seen = 0;
    const auto sees_more = [&] { return tested.states() >= seen + 20; };

    service.command("drop 0.3");
    expect(tested, "it gets through where three datagrams in ten are lost", sees_more);
    expect(tested, "of which some were lost indeed", [&] { return service.happened("drop") > 0; });
    service.command("heal");

    const std::size_t connections = tested.connections();
    service.command("restart");
    expect(tested, "it connects anew to a service that has forgotten it",
           [&] { return tested.connections() == connections + 1; });
    seen = tested.states();
    expect(tested, "and goes on watching", sees_more);

    service.command("unplug 1");
    expect(tested, "it sees that the device is gone", [&] { return !tested.sees_a_device(); });
    service.command("plug orvanta3");
    seen = tested.states();
    expect(tested, "and that it is back", sees_more);

    seen = tested.states();
    service.command("silence 300");
    expect(tested, "it sits a silence out", sees_more);
    expect(tested, "and its requests of that time do not wait for ever",
           [&] { return tested.waiting() <= 1; });

    service.stop();
    expect(tested, "it hears the goodbye of a service that ends", [&] { return !tested.sees_a_device(); });
    seen = tested.states();
    service.start();
    expect(tested, "and finds the next one", sees_more);
    return failures == 0 ? 0 : 1;
}
