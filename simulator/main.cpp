// The service simulator as a program: options, signals and console around the simulator of the library.
#include "simulator/control/console.hpp"
#include "simulator/control/console_input.hpp"
#include "simulator/control/control_scripts.hpp"
#include "simulator/control/json_answers.hpp"
#include "simulator/control/options.hpp"
#include "simulator/control/shutdown_signal.hpp"
#include "simulator/control/trace_file.hpp"
#include "simulator/simulation/verbs.hpp"
#include "vantu/orvanta/common/format.hpp"
#include "vantu/orvanta/common/log.hpp"
#include "vantu/orvanta/simulator.hpp"

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <optional>
#include <stdexcept>
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

// Prints the output of the console and of scenarios at once.
void print(std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
}

verb_result run(service_simulator& service, std::string_view line) {
    try {
        std::string text = service.command(line);
        return {true, service.has_quit(), std::move(text)};
    } catch (const std::invalid_argument& wrong) {
        return {false, false, wrong.what()};
    }
}

// The consoles, at standard input and at the control socket, as far as there are any.
class open_consoles {
  public:
    open_consoles(service_simulator& service, const options& chosen) : service_(service), json_(chosen.json) {
        if (chosen.interactive) {
            typed_.emplace(made(print, !json_ && standard_input_is_terminal()));
        }
        if (!chosen.control_path.empty()) {
            scripts_.emplace(chosen.control_path, [this](console::print_function answers) {
                return made(std::move(answers), false);
            });
        }
    }

    void attend() {
        const std::int64_t now_ns = std::chrono::nanoseconds(service_.now()).count();
        if (typed_) {
            for (std::string& line : input_.take_lines()) {
                typed_->take(std::move(line));
            }
            if (input_.has_ended()) {
                typed_->end_of_input();
            }
            typed_->attend(now_ns);
        }
        if (scripts_) {
            scripts_->attend(now_ns);
        }
    }

    [[nodiscard]] bool are_there() const { return typed_ || scripts_; }
    [[nodiscard]] bool have_quit() const { return typed_ && typed_->has_quit(); }
    [[nodiscard]] bool have_failed() const { return typed_ && typed_->has_failed(); }

  private:
    [[nodiscard]] console made(console::print_function answers, bool prompts) {
        return {[this](std::string_view line) { return run(service_, line); },
                [this](std::string_view line, const verb_result& result) {
                    return json_ ? json_answer(service_, line, result) : text_answer(line, result);
                },
                std::move(answers), prompts};
    }

    service_simulator& service_;
    bool json_;
    console_input input_;
    std::optional<console> typed_;
    std::optional<control_scripts> scripts_;
};

// With a line about each that does not.
bool all_hold(service_simulator& service, const std::vector<std::string>& expected) {
    bool hold = true;
    for (const std::string& wanted : expected) {
        const verb_result asked = run(service, "expect " + wanted);
        if (!asked.good) {
            say(asked.text);
            hold = false;
        }
    }
    return hold;
}

int simulate(options chosen) {
    // The socket layer's warnings are no news where a port is probed.
    set_log_sink([verbose = chosen.verbose](std::uint64_t, log_level, const std::string&, std::uint64_t,
                                            const std::string& message) {
        if (verbose) {
            say(message);
        }
    });
    const auto show = [json = chosen.json](std::string_view text) {
        print(json ? json_shown(text) : std::string(text));
    };
    chosen.simulated.warn = say;
    chosen.simulated.show = show;
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
    open_consoles consoles(service, chosen);
    print(formatted("listening on port {}\nseed {}\n", service.port(), service.seed()));
    if (!service.about().empty()) {
        show(service.about() + '\n');
    }

    // Signals end a sleep, lines do not.
    const std::chrono::milliseconds longest_sleep(consoles.are_there() ? 10 : 200);
    service.serve(
        [&consoles] {
            consoles.attend();
            return shutdown_was_requested() || consoles.have_quit();
        },
        longest_sleep);
    const bool held = all_hold(service, chosen.expected);
    return held && service.failed_steps() == 0 && !consoles.have_failed() ? 0 : status_failed;
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
        return simulate(with_scenario(std::move(outcome.chosen)));
    } catch (const std::invalid_argument& wrong) {
        say(wrong.what());
        return status_wrong_usage;
    } catch (const std::exception& failure) {
        say(failure.what());
        return status_failed;
    }
}
