#include "ctl/arguments/parse.hpp"

#include "ctl/arguments/command_table.hpp"
#include "ctl/arguments/times.hpp"
#include "ctl/report/exit_status.hpp"
#include "vantu/orvanta/common/format.hpp"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

namespace vantu::orvanta::ctl {
namespace {

constexpr std::size_t width_of_names = 34;
constexpr double least_rate_hz = 0.001;
constexpr double greatest_rate_hz = 10000;

constexpr const char* exit_statuses =
    "Exit statuses: 0 done, 1 refused or failed, 2 wrong usage, 3 no service, 4 no device\n"
    "or several, 5 no answer in time, 6 lost on the way, 130 interrupted.";

watch_format format_of(std::string_view option, std::string_view text) {
    using named = std::pair<std::string_view, watch_format>;
    constexpr std::array formats{named{"live", watch_format::live}, named{"lines", watch_format::lines},
                                 named{"csv", watch_format::csv}, named{"json", watch_format::json}};
    const auto* const found =
        std::find_if(formats.begin(), formats.end(), [text](const named& one) { return one.first == text; });
    if (found == formats.end()) {
        throw failure_with_status(
            exit_status::wrong_usage,
            formatted("{}: '{}' is none of the formats live, lines, csv and json", option, text));
    }
    return found->second;
}

// An option's value goes into the request when the parser has found it.
void add_option(CLI::App& to, const option_row& row, request& into) {
    const std::string name(row.name);
    const std::string meaning(row.meaning);
    const std::string value(row.value);
    switch (row.id) {
    case option_id::device:
        to.add_option(name, into.device, meaning)->type_name(value);
        return;
    case option_id::timeout:
        to.add_option_function<std::string>(
              name, [&into, name](const std::string& text) { into.timeout = time_of(name, text); }, meaning)
            ->type_name(value);
        return;
    case option_id::json:
        to.add_flag(name, into.json, meaning);
        return;
    case option_id::verbose:
        to.add_flag(name, into.verbose, meaning);
        return;
    case option_id::save:
        to.add_flag(name, into.save, meaning);
        return;
    case option_id::dry_run:
        to.add_flag(name, into.dry_run, meaning);
        return;
    case option_id::other_device:
        to.add_flag(name, into.other_device, meaning);
        return;
    case option_id::duration:
        to.add_option_function<std::string>(
              name, [&into, name](const std::string& text) { into.duration = time_of(name, text); }, meaning)
            ->type_name(value);
        return;
    case option_id::rate:
        to.add_option(name, into.rate_hz, meaning)
            ->type_name(value)
            ->check(CLI::Range(least_rate_hz, greatest_rate_hz));
        return;
    case option_id::format:
        to.add_option_function<std::string>(
              name, [&into, name](const std::string& text) { into.format = format_of(name, text); }, meaning)
            ->type_name(value);
        return;
    case option_id::plot:
        to.add_option(name, into.plot, meaning)->type_name(value);
        return;
    }
}

void add_words(CLI::App& to, const command_row& row, request& into) {
    switch (row.words) {
    case words_kind::none:
        return;
    case words_kind::keys:
        to.add_option("KEY", into.words, "the keys; all when there is none");
        return;
    case words_kind::assignments:
        to.add_option("KEY=VALUE", into.words, "what to set")->required();
        return;
    case words_kind::file:
        to.add_option("FILE", into.words, "the path of a backup")->required()->expected(1);
        return;
    }
}

std::string one_line(std::string text) {
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

} // namespace

request parse(int argument_count, const char* const* arguments) {
    request asked;
    CLI::App app("Finds, shows and configures an Orvanta3 by way of its device service.", "orvantactl");
    app.get_formatter()->column_width(width_of_names);
    app.footer(exit_statuses);
    app.require_subcommand(1);
    app.set_help_flag("-h,--help", "print this help, or that of a command");
    for (const option_row& row : options()) {
        if (is_common(row.id)) {
            add_option(app, row, asked);
        }
    }
    for (const command_row& row : commands()) {
        CLI::App* command = app.add_subcommand(std::string(row.name), std::string(row.summary));
        command->get_formatter()->column_width(width_of_names);
        command->fallthrough();
        for (const option_id id : row.options) {
            add_option(*command, row_of(id), asked);
        }
        add_words(*command, row, asked);
    }
    try {
        app.parse(argument_count, arguments);
    } catch (const CLI::CallForHelp&) {
        const std::vector<CLI::App*> chosen = app.get_subcommands();
        throw help_asked{chosen.empty() ? app.help() : chosen.front()->help()};
    } catch (const CLI::ParseError& wrong) {
        throw failure_with_status(exit_status::wrong_usage, one_line(wrong.what()));
    }
    asked.command = find_command(app.get_subcommands().front()->get_name());
    return asked;
}

bool asks_for_json(int argument_count, const char* const* arguments) noexcept {
    const std::span all(arguments, static_cast<std::size_t>(argument_count));
    return std::any_of(all.begin(), all.end(), [](std::string_view word) { return word == "--json"; });
}

} // namespace vantu::orvanta::ctl
