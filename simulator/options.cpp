// The simulator's command line.
#include "simulator/options.hpp"

#include "simulator/device.hpp"
#include "simulator/streams.hpp"
#include "vantu/orvanta/common/diagnostics/version.hpp"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <map>

namespace vantu::orvanta::simulator {
namespace {

const std::map<std::string, announce_order> announce_orders{{"before", announce_order::before},
                                                            {"after", announce_order::after}};

constexpr std::size_t greatest_port = 65535;

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

// The help's texts state the ranges.
CLI::Validator whole_numbers_to(std::size_t last) {
    return CLI::Range(std::size_t{0}, last).description("");
}

std::string one_line(std::string text) {
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

} // namespace

parse_outcome parse_options(int argument_count, const char* const* arguments) {
    parse_outcome outcome;
    options& chosen = outcome.chosen;
    std::size_t port = 54320;
    std::string announce = "before";

    CLI::App app("Simulates the device service with Orvanta3 and Palmetron devices.", "orvanta-simulator");
    app.set_help_flag("-h,--help", "Print this help and end");
    app.set_version_flag("--version", std::string("orvanta-simulator ") + version_record::left_version,
                         "Print the version and end");
    app.add_option("--port", port, "UDP port on 127.0.0.1 and ::1; 0 takes a free one")
        ->check(whole_numbers_to(greatest_port))
        ->capture_default_str()
        ->type_name("N");
    app.add_option("--orvanta3", chosen.orvanta3_count, "Number of Orvanta3 devices, 0 to 256")
        ->check(whole_numbers_to(most_devices_of_a_type))
        ->capture_default_str()
        ->type_name("N");
    app.add_option("--palmetron", chosen.palmetron_count, "Number of Palmetron devices, 0 to 256")
        ->check(whole_numbers_to(most_devices_of_a_type))
        ->capture_default_str()
        ->type_name("N");
    app.add_option("--announce", announce, "List the devices 'before' or 'after' a client's acceptance")
        ->check(CLI::IsMember(announce_orders).description(""))
        ->capture_default_str()
        ->type_name("WHEN");
    app.add_flag("--single-client", chosen.single_client, "Refuse a client while another is connected");
    app.add_option("--rate", chosen.rate_hz, "States of an opened device a second, 0 to 10000")
        ->check(rate_range())
        ->capture_default_str()
        ->type_name("HZ");
    app.add_option("--state", chosen.state_path, "File that keeps the saved configurations")
        ->check(file_name())
        ->type_name("FILE");
    app.add_flag("--verbose", chosen.verbose, "Tell on standard error what the service does");

    try {
        app.parse(argument_count, arguments);
        chosen.port = std::to_string(port);
        chosen.announce = announce_orders.at(announce);
    } catch (const CLI::CallForHelp&) {
        outcome.verdict = parse_verdict::show;
        outcome.text = app.help();
    } catch (const CLI::CallForVersion& asked) {
        outcome.verdict = parse_verdict::show;
        outcome.text = std::string(asked.what()) + '\n';
    } catch (const CLI::ParseError& wrong) {
        outcome.verdict = parse_verdict::wrong;
        outcome.text = one_line(wrong.what());
    }
    return outcome;
}

} // namespace vantu::orvanta::simulator
