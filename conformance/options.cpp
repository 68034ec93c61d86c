#include "conformance/options.hpp"

#include "conformance/report.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"
#include "vantu/orvanta/common/version.hpp"

#include <CLI/CLI.hpp>
#include <algorithm>

namespace vantu::orvanta::conformance {
namespace {

constexpr unsigned greatest_port = 65535;
constexpr unsigned longest_answer_ms = 60'000;

const char* const last_words =
    "Exit status: 0 all rules hold, 1 some do not, 2 wrong usage, 3 no service there.\n"
    "Settings of a device change for moments and are put back. --list tells the rules.";

std::vector<const rule*> chosen_rules(const std::vector<std::string>& names) {
    for (const std::string& name : names) {
        if (find_rule(name) == nullptr) {
            throw CLI::ValidationError("--rule", "there is no rule '" + name + "'; --list tells them all");
        }
    }
    std::vector<const rule*> chosen;
    for (const rule& one : rules()) {
        if (names.empty() || std::find(names.begin(), names.end(), one.name) != names.end()) {
            chosen.push_back(&one);
        }
    }
    return chosen;
}

} // namespace

parse_outcome parse_options(int argument_count, const char* const* arguments) {
    parse_outcome outcome;
    options& chosen = outcome.chosen;
    unsigned port = 54320;
    unsigned answer_ms = 1000;
    bool list = false;
    std::vector<std::string> names;

    CLI::App app("Plays a client against a device service and tells which rules of the protocol it keeps.",
                 "orvanta-conformance");
    app.footer(last_words);
    app.set_help_flag("-h,--help", "Print this help and end");
    app.set_version_flag("--version", std::string("orvanta-conformance ") + version_record::left_version,
                         "Print the version and end");
    app.add_option("--port", port, "UDP port of the service on this machine")
        ->check(CLI::Range(1U, greatest_port).description(""))
        ->capture_default_str()
        ->type_name("N");
    app.add_flag("--list", list, "Print the rules and end");
    app.add_option("--rule", names, "Look at these rules alone")->type_name("NAME");
    app.add_option("--timeout", answer_ms, "Milliseconds after which an answer counts as none, 1 to 60000")
        ->check(CLI::Range(1U, longest_answer_ms).description(""))
        ->capture_default_str()
        ->type_name("MS");
    app.add_flag("--save", chosen.may_save, "Let the device save its configuration, as one rule wants");
    app.add_flag("--json", chosen.in_json, "Print one JSON document");
    app.add_option("--junit", chosen.junit_path, "Write the findings to this file as well, as JUnit does")
        ->type_name("FILE");
    try {
        app.parse(argument_count, arguments);
        chosen.port = std::to_string(port);
        chosen.answer_time_ns = std::int64_t{answer_ms} * ns_per_millisecond;
        chosen.rules = chosen_rules(names);
        if (list) {
            outcome = {parse_verdict::show, {}, list_of_rules()};
        }
    } catch (const CLI::CallForHelp&) {
        outcome = {parse_verdict::show, {}, app.help()};
    } catch (const CLI::CallForVersion& asked) {
        outcome = {parse_verdict::show, {}, std::string(asked.what()) + '\n'};
    } catch (const CLI::ParseError& wrong) {
        outcome = {parse_verdict::wrong, {}, wrong.what()};
    }
    return outcome;
}

} // namespace vantu::orvanta::conformance
