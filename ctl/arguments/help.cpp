#include "ctl/arguments/help.hpp"

#include "ctl/arguments/command_table.hpp"
#include "ctl/report/exit_status.hpp"
#include "vantu/orvanta/common/format.hpp"

namespace vantu::orvanta::ctl {
namespace {

// A name and its meaning, in two columns.
std::string entry(std::string_view name, std::string_view meaning) {
    return formatted("  {:<24} {}\n", name, meaning);
}

std::string common_options() {
    std::string text = entry("-h, --help", "print this help, or that of a command");
    for (const option_row& row : options()) {
        if (is_common(row.id)) {
            text += entry(option_text(row), row.meaning);
        }
    }
    return text;
}

std::string exit_status_list() {
    std::string text;
    for (const exit_status_row& row : exit_statuses()) {
        text += entry(std::to_string(static_cast<int>(row.status)), row.meaning);
    }
    return text;
}

// The words after the name, with a blank before them.
std::string usage_of_words(const command_row& row) {
    return row.usage.empty() ? std::string() : formatted(" {}", row.usage);
}

} // namespace

std::string option_text(const option_row& row) {
    return formatted("{}{}{}", row.name, row.value.empty() ? "" : " ", row.value);
}

std::string help_of_program() {
    std::string text = "Finds, shows and configures an Orvanta3 by way of its device service.\n"
                       "Usage: orvantactl COMMAND [OPTIONS]\n"
                       "\nCommands:\n";
    for (const command_row& row : commands()) {
        text += entry(formatted("{}{}", row.name, usage_of_words(row)), row.summary);
    }
    text += "\nOptions of each command:\n" + common_options();
    text += entry("--version", "the same as the command version");
    text += "\nOptions of its own: orvantactl COMMAND --help\n";
    return text + "\nExit statuses:\n" + exit_status_list();
}

std::string help_of_command(const command_row& row) {
    std::string text = formatted("orvantactl {}: {}\nUsage: orvantactl {} [OPTIONS]{}\n", row.name,
                                 row.summary, row.name, usage_of_words(row));
    if (const auto words = words_of(row.words); !words.empty()) {
        text += "\nWords:\n";
        for (const word_row& word : words) {
            text += entry(word.name, word.meaning);
        }
    }
    if (!row.options.empty()) {
        text += "\nOptions:\n";
        for (const option_id id : row.options) {
            text += entry(option_text(row_of(id)), row_of(id).meaning);
        }
    }
    return text + "\nOptions of each command:\n" + common_options();
}

} // namespace vantu::orvanta::ctl
