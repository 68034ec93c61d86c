#include "ctl/arguments/parse.hpp"

#include "ctl/arguments/command_table.hpp"
#include "ctl/arguments/help.hpp"
#include "ctl/arguments/near_word.hpp"
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

// An option's value goes into the request when the parser has found it.
void add_option(CLI::App& to, const option_row& row, request& into) {
    const std::string name(row.name);
    const std::string meaning(row.meaning);
    const std::string value(row.value);
    switch (row.id) {
    case option_id::device:
        to.add_option(name, into.device, meaning)->type_name(value);
        return;
    case option_id::duration:
        to.add_option_function<std::string>(
              name, [&into, name](const std::string& text) { into.duration = time_of(name, text); }, meaning)
            ->type_name(value);
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
    }
}

void add_words(CLI::App& to, const command_row& row, request& into) {
    switch (row.words) {
    case words_kind::none:
        return;
    case words_kind::event:
        to.add_option("EVENT", into.words);
        return;
    }
}

[[noreturn]] void refuse(const std::string& text) {
    throw failure_with_status(exit_status::wrong_usage, text);
}

// Where a mistake lies: "list: ", or nothing before there is a command.
std::string place_of(const command_row* command) {
    return command == nullptr ? std::string() : formatted("{}: ", command->name);
}

std::string see_help(const command_row* command) {
    return command == nullptr ? std::string("; see orvantactl --help")
                              : formatted("; see orvantactl {} --help", command->name);
}

template <typename Rows> std::vector<std::string_view> names_of(const Rows& rows) {
    std::vector<std::string_view> names;
    for (const auto& row : rows) {
        names.push_back(row.name);
    }
    return names;
}

// Its end is the hint where there is one.
[[noreturn]] void refuse_with_hint(const std::string& complaint, const std::string& hint,
                                   const command_row* command) {
    refuse(complaint + (hint.empty() ? see_help(command) : hint));
}

[[noreturn]] void refuse_option(const std::string& typed, const command_row* command) {
    const std::string name = typed.substr(0, typed.find('='));
    std::vector<std::string_view> known{"--help", "--version"};
    for (const option_row& row : options()) {
        const bool is_its_own =
            command != nullptr &&
            std::find(command->options.begin(), command->options.end(), row.id) != command->options.end();
        if (is_common(row.id) || is_its_own) {
            known.push_back(row.name);
        }
    }
    refuse_with_hint(place_of(command) + "there is no option " + name, hint_for(name, known), command);
}

// Refuses words and options that have no place, the first of them.
void expect_no_surplus(const std::vector<std::string>& surplus, const command_row* command) {
    if (command == nullptr) {
        if (surplus.empty()) {
            refuse("a command is missing; see orvantactl --help");
        }
        if (!surplus.front().starts_with('-')) {
            refuse_with_hint("there is no command '" + surplus.front() + "'",
                             hint_for(surplus.front(), names_of(commands())), nullptr);
        }
    }
    if (surplus.empty()) {
        return;
    }
    if (surplus.front().starts_with('-')) {
        refuse_option(surplus.front(), command);
    }
    refuse(place_of(command) + "'" + surplus.front() + "' is a word too many" + see_help(command));
}

// A command that knows its words takes one of them.
void expect_known_words(const request& asked) {
    const auto known = words_of(asked.command->words);
    if (!known.empty() && asked.words.size() > 1) {
        expect_no_surplus({asked.words[1]}, asked.command);
    }
    for (const std::string& word : asked.words) {
        const auto is_it = [&word](const word_row& row) { return row.name == word; };
        if (!known.empty() && std::none_of(known.begin(), known.end(), is_it)) {
            refuse_with_hint(place_of(asked.command) + "'" + word + "' is no word that it knows",
                             hint_for(word, names_of(known)), asked.command);
        }
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

// What follows "complete --" are words of a command line, and no options of this one.
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
    } catch (const CLI::ArgumentMismatch& wrong) {
        const std::string text = one_line(wrong.what());
        refuse(place_of(command_of(app)) + text.substr(0, text.find(": ")) + " needs one value");
    } catch (const CLI::ParseError& wrong) {
        if (dynamic_cast<const CLI::ExtrasError*>(&wrong) != nullptr) {
            expect_no_surplus(app.remaining(true), command_of(app));
        }
        refuse(place_of(command_of(app)) + one_line(wrong.what()));
    } catch (const failure_with_status& wrong) {
        refuse(place_of(command_of(app)) + wrong.what());
    }
    asked.command = version ? find_command("version") : command_of(app);
    if (asked.command == nullptr) {
        expect_no_surplus({}, nullptr);
    }
    expect_known_words(asked);
    return asked;
}

bool asks_for_json(int argument_count, const char* const* arguments) noexcept {
    const std::span all(arguments, static_cast<std::size_t>(argument_count));
    return std::any_of(all.begin(), all.end(), [](std::string_view word) { return word == "--json"; });
}

} // namespace vantu::orvanta::ctl
