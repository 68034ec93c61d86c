#include "simulator/control/options.hpp"

#include "shared/near_word.hpp"
#include "shared/text_lines.hpp"
#include "simulator/control/scenario.hpp"
#include "simulator/control/shipped_scenarios.hpp"
#include "simulator/faults/faults.hpp"
#include "simulator/service/device.hpp"
#include "simulator/service/streams.hpp"
#include "simulator/simulation/conditions.hpp"
#include "vantu/orvanta/common/version.hpp"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <map>
#include <vector>

namespace vantu::orvanta::simulator {
namespace {

const std::map<std::string, service_simulator::announce> announce_orders{
    {"before", service_simulator::announce::before}, {"after", service_simulator::announce::after}};

constexpr std::size_t greatest_port = 65535;
constexpr std::string_view usual_port = "54320";

// Refuses what is no number as well.
CLI::Validator rate_range() {
    return {[](std::string& text) -> std::string {
                double rate = -1;
                const bool good =
                    CLI::detail::lexical_cast(text, rate) && rate >= 0 && rate <= greatest_rate_hz;
                return good ? "" : "'" + text + "' is no rate from 0 to 10000";
            },
            ""};
}

CLI::Validator file_name() {
    return {[](std::string& text) -> std::string { return text.empty() ? "the file has no name" : ""; }, ""};
}

CLI::Validator right_condition() {
    return {[](std::string& text) -> std::string {
                try {
                    (void)parse_condition("--expect", text);
                    return {};
                } catch (const std::invalid_argument& wrong) {
                    return wrong.what();
                }
            },
            ""};
}

// The help's texts state the ranges.
CLI::Validator whole_numbers_to(std::size_t last) {
    return CLI::Range(std::size_t{0}, last).description("");
}

std::string one_line(std::string text) {
    std::replace(text.begin(), text.end(), '\n', ' ');
    return without_control_characters(text);
}

std::uint64_t seed_of(const std::string& text) {
    std::uint64_t seed = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, seed);
    if (error != std::errc{} || stop != end) {
        throw CLI::ValidationError("--seed",
                                   "'" + text + "' is no whole number from 0 to 18446744073709551615");
    }
    return seed;
}

void add_fault_options(CLI::App& app) {
    for (const fault_row& row : faults) {
        CLI::Option* option = app.add_option("--" + std::string(row.name));
        option->expected(0, 1)->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)->group("");
    }
}

// As the settings take them, in the order of the command line, from which that of the rules follows.
std::vector<std::string> faults_in(const CLI::App& app) {
    std::vector<std::string> read;
    std::map<const CLI::Option*, std::size_t> taken;
    for (const CLI::Option* option : app.parse_order()) {
        const std::string& name = option->get_lnames().front();
        if (find_fault(name) == nullptr) {
            continue;
        }
        try {
            read.push_back(text_of(initial_fault(name + ' ' + option->results().at(taken[option]++))));
        } catch (const std::invalid_argument& wrong) {
            throw CLI::ValidationError("--" + std::string(wrong.what()));
        }
    }
    return read;
}

// Without blank lines all options fit on a screen.
std::string help_on_options(const CLI::App& app) {
    std::string text = app.help();
    for (auto at = text.find("\n\n"); at != std::string::npos; at = text.find("\n\n")) {
        text.erase(at, 1);
    }
    return text;
}

// The topic's help, or what is wrong with it.
parse_outcome help_outcome(const CLI::App& app, const std::string& topic) {
    parse_outcome outcome;
    outcome.verdict = parse_verdict::show;
    if (topic.empty()) {
        outcome.text = help_on_options(app);
    } else if (auto text = help_on(topic)) {
        outcome.text = std::move(*text);
    } else {
        outcome.verdict = parse_verdict::wrong;
        outcome.text = one_line("--help: '" + topic +
                                "' is no topic; faults, scenario, console or a fault's name would be right");
    }
    return outcome;
}

// Refuses what is no option, with the one that was probably meant.
void expect_no_surplus(const CLI::App& app) {
    const std::vector<std::string> surplus = app.remaining();
    if (surplus.empty()) {
        return;
    }
    const auto wrong = std::find_if(surplus.begin(), surplus.end(),
                                    [](const std::string& text) { return text.starts_with('-'); });
    if (wrong == surplus.end()) {
        throw CLI::ValidationError("'" + surplus.front() + "' belongs to no option; --help lists them all");
    }
    std::vector<std::string> names;
    for (const CLI::Option* option : app.get_options()) {
        names.push_back("--" + option->get_lnames().front());
    }
    const std::vector<std::string_view> words(names.begin(), names.end());
    const std::string name = wrong->substr(0, wrong->find('='));
    throw CLI::ValidationError(name,
                               "there is no such option" + hint_for(name, words) + "; --help lists them all");
}

// The words around the list of options, and its width.
void describe(CLI::App& app) {
    constexpr std::size_t width_of_names = 26;
    app.get_formatter()->column_width(width_of_names);
    app.footer("Faults, as in --drop 0.05 --truncate 17@op=66: see --help faults.\n"
               "Topics: --help faults, --help scenario, --help console, --help FAULT.");
}

void add_count(CLI::App& app, const std::string& name, std::optional<std::size_t>& count,
               const std::string& what) {
    app.add_option(name, count, what)
        ->check(whole_numbers_to(most_devices_of_a_type))
        ->default_str("1")
        ->type_name("N");
}

void add_service_options(CLI::App& app, options& chosen) {
    service_simulator::settings& simulated = chosen.simulated;
    app.add_option_function<std::size_t>(
           "--port", [&simulated](std::size_t port) { simulated.port = std::to_string(port); },
           "UDP port on 127.0.0.1 and ::1; 0 takes a free one")
        ->check(whole_numbers_to(greatest_port))
        ->default_str(std::string(usual_port))
        ->type_name("N");
    add_count(app, "--orvanta3", simulated.orvanta3_count, "Number of Orvanta3 devices, 0 to 256");
    add_count(app, "--palmetron", simulated.palmetron_count, "Number of Palmetron devices, 0 to 256");
    app.add_option_function<std::string>(
           "--announce",
           [&simulated](const std::string& order) { simulated.devices = announce_orders.at(order); },
           "List devices 'before' or 'after' the acceptance")
        ->check(CLI::IsMember(announce_orders).description(""))
        ->default_str("before")
        ->type_name("WHEN");
    app.add_flag_callback(
        "--single-client", [&simulated] { simulated.single_client = true; },
        "Refuse a client while another is connected");
    app.add_option("--rate", simulated.rate_hz, "States of an opened device a second, 0 to 10000")
        ->check(rate_range())
        ->default_str("100")
        ->type_name("HZ");
    app.add_option("--state", simulated.state_path, "File that keeps the saved configurations")
        ->check(file_name())
        ->type_name("FILE");
    app.add_option("--trace", chosen.trace_path, "File for a line a datagram; - is standard output")
        ->check(file_name())
        ->type_name("FILE");
    app.add_option("--capture", simulated.capture_path, "File for what the sockets carry, in the pcap format")
        ->check(file_name())
        ->type_name("FILE");
    app.add_flag("--verbose", chosen.verbose, "Tell on standard error what the service does");
}

void add_script_options(CLI::App& app, options& chosen) {
    app.add_flag("--interactive", chosen.interactive, "Do what lines of standard input say");
    app.add_option("--control", chosen.control_path, "Socket, or file of a port, that takes such lines")
        ->check(file_name())
        ->type_name("FILE");
    app.add_flag("--json", chosen.json, "Answer lines with a JSON document each");
    app.add_option("--expect", chosen.expected, "End with 1 unless this holds at the end; repeatable")
        ->check(right_condition())
        ->allow_extra_args(false)
        ->type_name("CONDITION");
}

} // namespace

parse_outcome parse_options(int argument_count, const char* const* arguments) {
    parse_outcome outcome;
    options& chosen = outcome.chosen;

    CLI::App app("Simulates the device service with Orvanta3 and Palmetron devices.", "orvanta-simulator");
    describe(app);
    app.allow_extras(); // to say more about them than the parser does
    app.set_help_flag();
    const CLI::Option* help = app.add_option("-h,--help", "Print this help, or the help on a topic, and end")
                                  ->expected(0, 1)
                                  ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
                                  ->type_name("[TOPIC]");
    app.set_version_flag("--version", std::string("orvanta-simulator ") + version_record::left_version,
                         "Print the version and end");
    add_service_options(app, chosen);
    app.add_option_function<std::string>(
           "--seed", [&chosen](const std::string& text) { chosen.simulated.seed = seed_of(text); },
           "Source of all chances; random if left out")
        ->type_name("N");
    app.add_option("--scenario", chosen.simulated.scenario_path, "File of what happens when, name, or 'list'")
        ->check(file_name())
        ->type_name("FILE");
    add_script_options(app, chosen);
    add_fault_options(app);

    try {
        app.parse(argument_count, arguments);
        if (help->count() != 0) {
            return help_outcome(app, help->results().front());
        }
        expect_no_surplus(app);
        if (chosen.simulated.scenario_path == "list") {
            return {parse_verdict::show, {}, list_of_scenarios()};
        }
        chosen.simulated.scenario_path = scenario_path_of(chosen.simulated.scenario_path);
        chosen.simulated.faults = faults_in(app);
    } catch (const CLI::CallForVersion& asked) {
        outcome.verdict = parse_verdict::show;
        outcome.text = std::string(asked.what()) + '\n';
    } catch (const CLI::ParseError& wrong) {
        if (help->count() != 0) {
            return help_outcome(app, help->results().front());
        }
        outcome.verdict = parse_verdict::wrong;
        outcome.text = one_line(wrong.what());
    }
    return outcome;
}

options with_scenario(options chosen) {
    const std::string& path = chosen.simulated.scenario_path;
    const scenario script = path.empty() ? scenario{} : read_scenario(path);
    if (!chosen.simulated.port && !script.settings.port) {
        chosen.simulated.port = usual_port;
    }
    if (chosen.trace_path.empty()) {
        chosen.trace_path = script.trace_path;
    }
    chosen.verbose = chosen.verbose || script.verbose;
    return chosen;
}

} // namespace vantu::orvanta::simulator
