// The table of commands and the table of options: parser, help, completions, manual page and tests go by
// them.
#pragma once

#include "ctl/arguments/request.hpp"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vantu::orvanta::ctl {

class output;

enum class option_id : std::uint8_t {
    device,
    save,
    dry_run,
    other_device,
    duration,
    rate,
    format,
    plot,
    capture,
    timeout,
    json,
    verbose,
};

struct option_row {
    option_id id;
    std::string_view name;    // as typed: "--device"
    std::string_view value;   // what follows it in the help: "D"; empty for a flag
    std::string_view meaning; // one line
};

// A word after --format.
struct format_row {
    std::string_view name;
    watch_format format;
    std::string_view meaning; // one line
};

// The words that follow a command.
enum class words_kind : std::uint8_t {
    none,
    keys,        // of the table in ctl/settings/keys.hpp; none: all
    assignments, // KEY=VALUE, at least one
    file,        // one
    event,       // one or none of those of wait
};

// A word that a command knows.
struct word_row {
    std::string name;
    std::string meaning; // one line
};

struct command_row {
    std::string_view name;
    words_kind words;
    std::string_view usage;             // of its words, as in "KEY=VALUE..."
    std::string_view summary;           // one line
    std::span<const option_id> options; // beside those that go with each command
    void (*run)(const request& asked, output& out);
};

[[nodiscard]] std::span<const command_row> commands() noexcept;
[[nodiscard]] std::span<const option_row> options() noexcept;
[[nodiscard]] std::span<const format_row> formats() noexcept;

// The words that may follow: events, or keys; none where the words are free.
[[nodiscard]] std::vector<word_row> words_of(words_kind kind);

// The command that shells ask for candidates: "complete", which no help shows.
[[nodiscard]] const command_row& completion_command() noexcept;

// Null when there is none.
[[nodiscard]] const command_row* find_command(std::string_view name) noexcept;
[[nodiscard]] const option_row& row_of(option_id id) noexcept;

// Whether the option goes with each command.
[[nodiscard]] bool is_common(option_id option) noexcept;
// Whether it goes with this one, by itself or as a common one; with none, whether it is common.
[[nodiscard]] bool goes_with(option_id option, const command_row* command) noexcept;

} // namespace vantu::orvanta::ctl
