// The service simulator: options, scenario, sockets, console, serving, goodbye.
#include "simulator/control/console.hpp"
#include "simulator/control/console_input.hpp"
#include "simulator/control/options.hpp"
#include "simulator/control/scenario.hpp"
#include "simulator/control/scenario_runner.hpp"
#include "simulator/control/shutdown_signal.hpp"
#include "simulator/service/saved_state.hpp"
#include "simulator/simulation/simulation.hpp"
#include "simulator/simulation/verbs.hpp"
#include "simulator/sockets/listeners.hpp"
#include "simulator/sockets/server.hpp"
#include "vantu/orvanta/common/format.hpp"
#include "vantu/orvanta/common/log.hpp"
#include "vantu/orvanta/common/platform.hpp"

#include <cstdio>
#include <exception>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

using namespace vantu::orvanta;
using namespace vantu::orvanta::simulator;

constexpr int status_failed = 1;
constexpr int status_wrong_usage = 2;

// One call, one line, so that lines of several programs on one terminal stay whole. At once: Windows keeps
// back what goes into a pipe.
void say(std::string_view line) {
    std::string text("orvanta-simulator: ");
    text.append(line).append("\n");
    std::fputs(text.c_str(), stderr);
    std::fflush(stderr);
}

// Each run has chances of its own, and ids of clients that no other run gives.
std::uint64_t random_seed() {
    std::random_device source;
    return (static_cast<std::uint64_t>(source()) << 32U) | source();
}

// Prints the output of the console and of scenarios at once.
void print(std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
}

// The lines of standard input and the console that does them.
class input_console {
  public:
    explicit input_console(simulation& target)
        : console_([&target](std::string_view line) { return run_verb(target, line); }, print,
                   standard_input_is_terminal()) {}

    void attend(std::int64_t now_ns) {
        for (std::string& line : input_.take_lines()) {
            console_.take(std::move(line));
        }
        if (input_.has_ended()) {
            console_.end_of_input();
        }
        console_.attend(now_ns);
    }

    [[nodiscard]] bool has_quit() const { return console_.has_quit(); }

  private:
    console_input input_;
    console console_;
};

void serve(const options& chosen, simulation& target, const listeners& sockets,
           std::vector<scenario_step> steps) {
    scenario_runner runner(target, std::move(steps), print);
    const simulation_drive drive{
        [&runner](std::int64_t since_start_ns) { runner.advance_to(since_start_ns); },
        [&runner] { runner.attend(); }, [&runner] { return runner.next_due_ns(); }};
    std::optional<input_console> input;
    if (chosen.interactive) {
        input.emplace(target);
    }
    // Lines of standard input do not end a sleep.
    constexpr std::int64_t longest_interactive_sleep_ns = 10'000'000;
    server(target, sockets, make_steady_clock(), drive)
        .serve(
            [&] {
                if (input) {
                    input->attend(target.now_ns());
                }
                return shutdown_was_requested() || runner.has_quit() || (input && input->has_quit());
            },
            input ? longest_interactive_sleep_ns : server::longest_sleep_ns);
}

int simulate(const options& chosen) {
    scenario script;
    if (!chosen.scenario_path.empty()) {
        script = read_scenario(chosen.scenario_path);
    }
    if (script.devices && chosen.counts_devices) {
        say("--orvanta3 and --palmetron: the scenario names its devices; one of the two would be right");
        return status_wrong_usage;
    }

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
    settings.seed = chosen.seed ? *chosen.seed : script.seed ? *script.seed : random_seed();
    settings.devices =
        script.devices ? *script.devices : make_devices(chosen.orvanta3_count, chosen.palmetron_count);
    settings.warn = say;
    if (chosen.verbose) {
        settings.narrate = say;
    }
    std::optional<saved_state> state;
    if (!chosen.state_path.empty()) {
        settings.state = &state.emplace(chosen.state_path);
    }

    simulation simulated(std::move(settings));
    for (const fault_rule& rule : chosen.faults) {
        simulated.add_fault(rule);
    }
    const listeners sockets(chosen.port);
    watch_for_shutdown();
    print(formatted("listening on port {}\nseed {}\n", sockets.port(), simulated.seed()));
    serve(chosen, simulated, sockets, std::move(script.steps));
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
