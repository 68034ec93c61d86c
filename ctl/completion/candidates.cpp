#include "ctl/completion/candidates.hpp"

#include "ctl/arguments/command_table.hpp"
#include "ctl/service/device_text.hpp"
#include "ctl/settings/keys.hpp"
#include "vantu/orvanta/common/format.hpp"

#include <algorithm>

namespace vantu::orvanta::ctl {
namespace {

using devices_source = std::function<std::vector<device>()>;

// The line as far as it stands: which command, and whether the last word is an option's value.
struct line {
    const command_row* command{nullptr};
    const option_row* awaiting{nullptr}; // its value is the word being typed
    bool options_ended{false};           // by "--"
    std::vector<std::string> words;      // of the command, without the one being typed
};

const option_row* find_option(std::string_view name) {
    const auto rows = options();
    const auto found =
        std::find_if(rows.begin(), rows.end(), [name](const option_row& row) { return row.name == name; });
    return found == rows.end() ? nullptr : &*found;
}

line read(const std::vector<std::string>& words) {
    line so_far;
    for (std::size_t i = 0; i + 1 < words.size(); ++i) {
        const std::string& word = words[i];
        if (so_far.awaiting != nullptr) {
            so_far.awaiting = nullptr;
        } else if (word == "--") {
            so_far.options_ended = true;
        } else if (!so_far.options_ended && word.starts_with('-')) {
            const option_row* option = find_option(word);
            so_far.awaiting = option != nullptr && !option->value.empty() ? option : nullptr;
        } else if (so_far.command == nullptr) {
            so_far.command = find_command(word);
        } else {
            so_far.words.push_back(word);
        }
    }
    return so_far;
}

void add(candidates& to, std::string_view typed, std::string word, std::string_view meaning) {
    if (word.starts_with(typed)) {
        to.words.push_back({std::move(word), std::string(meaning)});
    }
}

// Ids at first; short ids and uuids for one who has begun to type them.
void add_devices(candidates& to, const std::string& prefix, std::string_view typed,
                 const devices_source& devices) {
    for (const device& one : devices()) {
        const std::string kind = name_of(one.type);
        add(to, typed, prefix + std::to_string(one.id), kind + " " + short_id_text(one) + " " + one.uuid);
        if (typed.size() > prefix.size()) {
            add(to, typed, prefix + short_id_text(one), kind + " " + one.uuid);
            add(to, typed, prefix + one.uuid, kind + " " + short_id_text(one));
        }
    }
}

// The prefix is "--device=" or nothing.
void add_values(candidates& to, const option_row& option, const std::string& prefix, std::string_view typed,
                const devices_source& devices) {
    switch (option.id) {
    case option_id::device:
        add_devices(to, prefix, typed, devices);
        return;
    case option_id::format:
        for (const format_row& row : formats()) {
            add(to, typed, formatted("{}{}", prefix, row.name), row.meaning);
        }
        return;
    case option_id::plot:
    case option_id::capture:
        to.files = prefix.empty();
        return;
    case option_id::rate:
    case option_id::save:
    case option_id::dry_run:
    case option_id::other_device:
    case option_id::duration:
    case option_id::timeout:
    case option_id::json:
    case option_id::verbose:
        return;
    }
}

void add_options(candidates& to, std::string_view typed, const command_row* command) {
    add(to, typed, "--help", "print the help");
    for (const option_row& row : options()) {
        if (goes_with(row.id, command)) {
            add(to, typed, std::string(row.name), row.meaning);
        }
    }
    if (command == nullptr) {
        add(to, typed, "--version", "print the versions of program and library");
    }
}

bool is_there(const std::vector<std::string>& words, std::string_view key) {
    return std::any_of(words.begin(), words.end(),
                       [key](const std::string& word) { return word.substr(0, word.find('=')) == key; });
}

// KEY= at first, and then KEY=WORD.
void add_assignments(candidates& to, const line& so_far, std::string_view typed) {
    const std::size_t equals = typed.find('=');
    const key_row* key = find_key(typed.substr(0, equals));
    if (key != nullptr && key->can_be_set && equals != std::string_view::npos) {
        for (const std::string_view word : words_of(key->kind)) {
            add(to, typed, formatted("{}={}", key->name, word), key->meaning);
        }
        return;
    }
    for (const word_row& row : words_of(words_kind::assignments)) {
        if (!is_there(so_far.words, row.name)) {
            add(to, typed, row.name + "=", row.meaning);
        }
    }
}

void add_words(candidates& to, const line& so_far, std::string_view typed) {
    switch (so_far.command->words) {
    case words_kind::none:
        return;
    case words_kind::file:
        to.files = so_far.words.empty();
        return;
    case words_kind::assignments:
        add_assignments(to, so_far, typed);
        return;
    case words_kind::event:
        if (!so_far.words.empty()) {
            return;
        }
        break;
    case words_kind::keys:
        break;
    }
    for (const word_row& row : words_of(so_far.command->words)) {
        if (!is_there(so_far.words, row.name)) {
            add(to, typed, row.name, row.meaning);
        }
    }
}

} // namespace

candidates candidates_for(const std::vector<std::string>& words, const devices_source& devices) {
    candidates found;
    const std::string typed = words.empty() ? std::string() : words.back();
    const line so_far = read(words);
    const std::size_t equals = typed.find('=');
    if (so_far.awaiting != nullptr) {
        add_values(found, *so_far.awaiting, "", typed, devices);
    } else if (!so_far.options_ended && typed.starts_with("--") && equals != std::string::npos) {
        if (const option_row* option = find_option(typed.substr(0, equals))) {
            add_values(found, *option, typed.substr(0, equals + 1), typed, devices);
        }
    } else if (!so_far.options_ended && typed.starts_with('-')) {
        add_options(found, typed, so_far.command);
    } else if (so_far.command == nullptr) {
        for (const command_row& row : commands()) {
            add(found, typed, std::string(row.name), row.summary);
        }
    } else {
        add_words(found, so_far, typed);
    }
    return found;
}

} // namespace vantu::orvanta::ctl
