#include "ctl/arguments/parse.hpp"

#include "ctl/arguments/command_table.hpp"
#include "ctl/arguments/help.hpp"
#include "ctl/arguments/mistakes.hpp"
#include "ctl/arguments/times.hpp"
#include "ctl/report/exit_status.hpp"
#include "vantu/orvanta/common/format.hpp"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <span>
#include <string_view>
#include <vector>

namespace vantu::orvanta::ctl {
namespace {

constexpr double least_rate_hz = 0.001;
constexpr double greatest_rate_hz = 10000;

constexpr const char* exit_statuses =
    "Exit statuses: 0 done, 1 refused or failed, 2 wrong usage, 3 no service, 4 no device\n"
    "or several, 5 no answer in time, 6 lost on the way, 130 interrupted.";

watch_format format_of(std::string_view option, std::string_view text) {
    const auto rows = formats();
    const auto found =
        std::find_if(rows.begin(), rows.end(), [text](const format_row& row) { return row.name == text; });
    if (found == rows.end()) {
        throw failure_with_status(
            exit_status::wrong_usage,
            formatted("{}: '{}' is none of the formats live, lines, csv and json", option, text));
    }
    return found->format;
}

// An option's value goes into the request when the parser has found it.
void add_option(CLI::App& to, const option_row& row, request& into) {
    const std::string name(row.name);
    const auto add_time = [&](auto& value) {
        to.add_option_function<std::string>(
            name, [&value, name](const std::string& text) { value = time_of(name, text); });
    };
    switch (row.id) {
    case option_id::device:
        to.add_option(name, into.device);
        return;
    case option_id::save:
        to.add_flag(name, into.save);
        return;
    case option_id::dry_run:
        to.add_flag(name, into.dry_run);
        return;
    case option_id::other_device:
        to.add_flag(name, into.other_device);
        return;
    case option_id::duration:
        add_time(into.duration);
        return;
    case option_id::rate:
        to.add_option(name, into.rate_hz)->check(CLI::Range(least_rate_hz, greatest_rate_hz));
        return;
    case option_id::format:
        to.add_option_function<std::string>(
            name, [&into, name](const std::string& text) { into.format = format_of(name, text); });
        return;
    case option_id::plot:
        to.add_option(name, into.plot);
        return;
    case option_id::capture:
        to.add_option(name, into.capture);
        return;
    case option_id::timeout:
        add_time(into.timeout);
        return;
    case option_id::json:
        to.add_flag(name, into.json);
        return;
    case option_id::verbose:
        to.add_flag(name, into.verbose);
        return;
    }
}

void add_words(CLI::App& to, const command_row& row, request& into) {
    switch (row.words) {
    case words_kind::none:
        return;
    case words_kind::keys:
        to.add_option("KEY", into.words);
        return;
    case words_kind::assignments:
        to.add_option("KEY=VALUE", into.words)->required();
        return;
    case words_kind::file:
        to.add_option("FILE", into.words)->required()->expected(1);
        return;
    case words_kind::event:
        to.add_option("EVENT", into.words);
        return;
    }
}

std::string one_line(std::string text) {
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

const command_row* command_of(const CLI::App& app) {
    const std::vector<CLI::App*> chosen = app.get_subcommands();
    return chosen.empty() ? nullptr : find_command(chosen.front()->get_name());
}

void describe(CLI::App& app, request& into) {
    app.require_subcommand(0, 1);
    app.allow_windows_style_options(false); // "/tmp/file" is a file
    app.set_help_flag("-h,--help");
    for (const option_row& row : options()) {
        if (is_common(row.id)) {
            add_option(app, row, into);
        }
    }
    for (const command_row& row : commands()) {
        CLI::App* command = app.add_subcommand(std::string(row.name));
        command->fallthrough();
        for (const option_id id : row.options) {
            add_option(*command, row_of(id), into);
        }
        add_words(*command, row, into);
    }
}

// All behind "complete --" are words of a command line, and no options of this one.
request completion_request(std::span<const char* const> arguments) {
    request asked;
    asked.command = &completion_command();
    const std::size_t first = arguments.size() > 2 && std::string_view(arguments[2]) == "--" ? 3 : 2;
    for (const char* word : arguments.subspan(std::min(first, arguments.size()))) {
        asked.words.emplace_back(word);
    }
    return asked;
}

} // namespace

request parse(int argument_count, const char* const* arguments) {
    const std::span all(arguments, static_cast<std::size_t>(argument_count));
    if (all.size() > 1 && all[1] == completion_command().name) {
        return completion_request(all);
    }
    request asked;
    bool version = false;
    CLI::App app("", "orvantactl");
    describe(app, asked);
    app.add_flag("--version", version);
    try {
        app.parse(argument_count, arguments);
    } catch (const CLI::CallForHelp&) {
        const command_row* command = command_of(app);
        throw help_asked{command == nullptr ? help_of_program() : help_of_command(*command)};
    } catch (const CLI::ExtrasError&) {
        refuse_surplus(command_of(app), app.remaining(true));
    } catch (const CLI::ArgumentMismatch& wrong) {
        const std::string text = wrong.what();
        refuse(command_of(app), text.substr(0, text.find(": ")) + " needs one value");
    } catch (const CLI::ParseError& wrong) {
        refuse(command_of(app), one_line(wrong.what()));
    } catch (const failure_with_status& wrong) {
        refuse(command_of(app), wrong.what());
    }
    asked.command = version ? find_command("version") : command_of(app);
    if (asked.command == nullptr) {
        refuse_surplus(nullptr, {});
    }
    expect_known_words(asked);
    return asked;
}

bool asks_for_json(int argument_count, const char* const* arguments) noexcept {
    const std::span all(arguments, static_cast<std::size_t>(argument_count));
    return std::any_of(all.begin(), all.end(), [](std::string_view word) { return word == "--json"; });
}

} // namespace vantu::orvanta::ctl
