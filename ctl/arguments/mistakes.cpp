#include "ctl/arguments/mistakes.hpp"

#include "ctl/arguments/command_table.hpp"
#include "ctl/arguments/request.hpp"
#include "ctl/report/exit_status.hpp"
#include "shared/near_word.hpp"
#include "vantu/orvanta/common/format.hpp"

#include <algorithm>

namespace vantu::orvanta::ctl {
namespace {

template <typename Rows> std::vector<std::string_view> names_of(const Rows& rows) {
    std::vector<std::string_view> names;
    names.reserve(rows.size());
    for (const auto& row : rows) {
        names.push_back(row.name);
    }
    return names;
}

std::string see_help(const command_row* command) {
    return command == nullptr ? std::string("; see orvantactl --help")
                              : formatted("; see orvantactl {} --help", command->name);
}

[[noreturn]] void refuse_with_hint(const command_row* command, const std::string& complaint,
                                   const std::string& hint) {
    refuse(command, complaint + (hint.empty() ? see_help(command) : hint));
}

[[noreturn]] void refuse_option(const command_row* command, const std::string& typed) {
    const std::string name = typed.substr(0, typed.find('='));
    std::vector<std::string_view> known{"--help", "--version"};
    for (const option_row& row : options()) {
        if (goes_with(row.id, command)) {
            known.push_back(row.name);
        }
    }
    refuse_with_hint(command, "there is no option " + name, hint_for(name, known));
}

} // namespace

void refuse(const command_row* command, const std::string& text) {
    const std::string place = command == nullptr ? std::string() : formatted("{}: ", command->name);
    throw failure_with_status(exit_status::wrong_usage, place + text);
}

void refuse_surplus(const command_row* command, const std::vector<std::string>& surplus) {
    if (surplus.empty()) {
        refuse(command, "a command is missing" + see_help(command));
    }
    const std::string& first = surplus.front();
    if (first.starts_with('-')) {
        refuse_option(command, first);
    }
    if (command == nullptr) {
        refuse_with_hint(command, "there is no command '" + first + "'",
                         hint_for(first, names_of(commands())));
    }
    refuse(command, "'" + first + "' is a word too many" + see_help(command));
}

void expect_known_words(const request& asked) {
    if (asked.command->words != words_kind::event) {
        return;
    }
    const auto known = words_of(asked.command->words);
    if (asked.words.size() > 1) {
        refuse_surplus(asked.command, {asked.words[1]});
    }
    for (const std::string& word : asked.words) {
        const auto is_it = [&word](const word_row& row) { return row.name == word; };
        if (std::none_of(known.begin(), known.end(), is_it)) {
            refuse_with_hint(asked.command, "'" + word + "' is no word that it knows",
                             hint_for(word, names_of(known)));
        }
    }
}

} // namespace vantu::orvanta::ctl
