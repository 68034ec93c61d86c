// The service simulator: options, sockets, serving, goodbye.
#include "simulator/listeners.hpp"
#include "simulator/options.hpp"
#include "simulator/saved_state.hpp"
#include "simulator/server.hpp"
#include "simulator/shutdown_signal.hpp"
#include "simulator/simulation.hpp"
#include "vantu/orvanta/common/diagnostics/log.hpp"
#include "vantu/orvanta/common/utils/platform.hpp"

#include <cstdio>
#include <exception>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <utility>

namespace {

using namespace vantu::orvanta;
using namespace vantu::orvanta::simulator;

constexpr int status_failed = 1;
constexpr int status_wrong_usage = 2;

// One call, one line, so that lines of several programs on one terminal stay whole.
void say(std::string_view line) {
    std::string text("orvanta-simulator: ");
    text.append(line).append("\n");
    std::fputs(text.c_str(), stderr);
}

// Each run has chances of its own, and ids of clients that no other run gives.
std::uint64_t random_seed() {
    std::random_device source;
    return (static_cast<std::uint64_t>(source()) << 32U) | source();
}

int simulate(const options& chosen) {
    // The socket layer's warnings are no news where a port is probed.
    set_log_sink([verbose = chosen.verbose](std::uint64_t, log_level, const std::string&, std::uint64_t,
                                            const std::string& message) {
        if (verbose) {
            say(message);
        }
    });
    socket_startup();
    platform::make_sleeps_precise();

    simulation_settings settings;
    settings.announce = chosen.announce;
    settings.single_client = chosen.single_client;
    settings.rate_hz = chosen.rate_hz;
    settings.seed = random_seed();
    settings.devices = make_devices(chosen.orvanta3_count, chosen.palmetron_count);
    settings.warn = say;
    if (chosen.verbose) {
        settings.narrate = say;
    }
    std::optional<saved_state> state;
    if (!chosen.state_path.empty()) {
        settings.state = &state.emplace(chosen.state_path);
    }

    simulation simulated(std::move(settings));
    const listeners sockets(chosen.port);
    watch_for_shutdown();
    std::printf("listening on port %s\n", sockets.port().c_str());
    std::fflush(stdout);
    server(simulated, sockets, make_steady_clock()).serve(shutdown_was_requested);
    return 0;
}

} // namespace

int main(int argument_count, char** arguments) {
    try {
        const parse_outcome outcome = parse_options(argument_count, arguments);
        switch (outcome.verdict) {
        case parse_verdict::show:
            std::fputs(outcome.text.c_str(), stdout);
            return std::fflush(stdout) == 0 ? 0 : status_failed;
        case parse_verdict::wrong:
            say(outcome.text);
            return status_wrong_usage;
        case parse_verdict::run:
            break;
        }
        return simulate(outcome.chosen);
    } catch (const std::exception& failure) {
        say(failure.what());
        return status_failed;
    }
}
