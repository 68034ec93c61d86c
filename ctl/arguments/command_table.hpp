// The table of commands and the table of options: parser, help, completions, manual page and tests go by
// them.
#pragma once

#include "ctl/arguments/request.hpp"

#include <cstdint>
#include <span>
#include <string_view>

namespace vantu::orvanta::ctl {

class output;

enum class option_id : std::uint8_t {
    device,
    timeout,
    json,
    verbose,
    save,
    dry_run,
    other_device,
    duration,
    rate,
    format,
    plot,
};

struct option_row {
    option_id id;
    std::string_view name;    // as typed: "--device"
    std::string_view value;   // what follows it in the help: "D"; empty for a flag
    std::string_view meaning; // one line
};

// The words that follow a command.
enum class words_kind : std::uint8_t {
    none,
    keys,        // of the table in ctl/settings/keys.hpp; none: all
    assignments, // KEY=VALUE, at least one
    file,        // one
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

// Null when there is none.
[[nodiscard]] const command_row* find_command(std::string_view name) noexcept;
[[nodiscard]] const option_row& row_of(option_id id) noexcept;

// Whether the option goes with each command.
[[nodiscard]] bool is_common(option_id option) noexcept;

} // namespace vantu::orvanta::ctl
