// Uses the installed simulator: a client connects to it, and an hour passes at once.
#include "vantu/orvanta/client.hpp"
#include "vantu/orvanta/simulator.hpp"

#include <atomic>
#include <chrono>
#include <cstdio>
#include <stdexcept>
#include <thread>

int main() {
    namespace orvanta = vantu::orvanta;
    orvanta::service_simulator::settings wanted;
    wanted.manual_clock = true;
    orvanta::service_simulator service(wanted);
    orvanta::client client({});
    vantu_orvanta_init();
    std::atomic<std::int32_t> code{-1};
    std::thread connecting([&] {
        code = vantu_orvanta_connect_ports(client.context(), "0", service.port().c_str(), "simulated", 0, 0,
                                           5'000'000'000, 60'000'000'000);
    });
    while (code == -1) {
        service.serve_waiting();
        std::this_thread::yield();
    }
    connecting.join();
    const bool connected = code == 0 && service.count().clients == 1;
    service.advance(std::chrono::hours(1));
    bool refused = false;
    try {
        service.command("dorp 0.5");
    } catch (const std::invalid_argument& refusal) {
        refused = refusal.what()[0] != '\0';
    }
    const bool expired = service.count().clients == 0;
    if (!connected || !refused || !expired) {
        std::fprintf(stderr, "simulated: connected %d, refused %d, expired %d\n", connected, refused,
                     expired);
        return 1;
    }
    return 0;
}
