// The service simulator as a program: options, signals and console around the simulator of the library.
#include "simulator/control/console.hpp"
#include "simulator/control/console_input.hpp"
#include "simulator/control/options.hpp"
#include "simulator/control/shutdown_signal.hpp"
#include "simulator/control/trace_file.hpp"
#include "simulator/simulation/verbs.hpp"
#include "vantu/orvanta/common/format.hpp"
#include "vantu/orvanta/common/log.hpp"
#include "vantu/orvanta/simulator.hpp"

#include <chrono>
#include <cstdio>
#include <exception>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

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

// Prints the output of the console and of scenarios at once.
void print(std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
}

// The lines of standard input and the console that does them.
class input_console {
  public:
    explicit input_console(service_simulator& service)
        : service_(service),
          console_([this](std::string_view line) { return run(line); }, text_answer, print, standard_input_is_terminal()) {
    }

    void attend() {
        for (std::string& line : input_.take_lines()) {
            console_.take(std::move(line));
        }
        if (input_.has_ended()) {
            console_.end_of_input();
        }
        console_.attend(std::chrono::nanoseconds(service_.now()).count());
    }

    [[nodiscard]] bool has_quit() const { return console_.has_quit(); }
    [[nodiscard]] bool has_failed() const { return console_.has_failed(); }

  private:
    verb_result run(std::string_view line) {
        try {
            std::string text = service_.command(line);
            return {true, service_.has_quit(), std::move(text)};
        } catch (const std::invalid_argument& wrong) {
            return {false, false, wrong.what()};
        }
    }

    service_simulator& service_;
    console_input input_;
    console console_;
};

int simulate(options chosen) {
    // The socket layer's warnings are no news where a port is probed.
    set_log_sink([verbose = chosen.verbose](std::uint64_t, log_level, const std::string&, std::uint64_t,
                                            const std::string& message) {
        if (verbose) {
            say(message);
        }
    });
    chosen.simulated.warn = say;
    chosen.simulated.show = print;
    if (chosen.verbose) {
        chosen.simulated.narrate = say;
    }
    std::optional<trace_file> trace;
    if (!chosen.trace_path.empty()) {
        trace.emplace(chosen.trace_path, say);
        chosen.simulated.trace = [&trace](std::string_view line) { trace->write(line); };
    }
    service_simulator service(chosen.simulated);
    watch_for_shutdown();
    print(formatted("listening on port {}\nseed {}\n{}{}", service.port(), service.seed(), service.about(),
                    service.about().empty() ? "" : "\n"));

    std::optional<input_console> input;
    if (chosen.interactive) {
        input.emplace(service);
    }
    // Signals end a sleep, lines of standard input do not.
    const std::chrono::milliseconds longest_sleep(input ? 10 : 200);
    service.serve(
        [&input] {
            if (input) {
                input->attend();
            }
            return shutdown_was_requested() || (input && input->has_quit());
        },
        longest_sleep);
    return service.failed_steps() != 0 || (input && input->has_failed()) ? status_failed : 0;
}

} // namespace

int main(int argument_count, char** arguments) {
    try {
        parse_outcome outcome = parse_options(argument_count, arguments);
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
        return simulate(std::move(outcome.chosen));
    } catch (const std::invalid_argument& wrong) {
        say(wrong.what());
        return status_wrong_usage;
    } catch (const std::exception& failure) {
        say(failure.what());
        return status_failed;
    }
}
