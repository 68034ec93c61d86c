#include "ctl/arguments/command_table.hpp"

#include "ctl/commands/commands.hpp"

#include <algorithm>
#include <array>

namespace vantu::orvanta::ctl {
namespace {

using enum option_id;

constexpr std::array option_rows{
    option_row{device, "--device", "D", "the device: its id, its short id, or a part of its uuid"},
    option_row{timeout, "--timeout", "TIME", "the longest time of the whole command, as in 500ms or 2s"},
    option_row{json, "--json", "", "print results as JSON, one document a line, and errors too"},
    option_row{verbose, "-v", "", "print the library's log on standard error"},
};

constexpr std::array of_each_command{timeout, json, verbose};
constexpr std::array of_one_device{device};

constexpr std::array command_rows{
    command_row{"list", words_kind::none, "", "list the devices", {}, list_devices},
    command_row{"info", words_kind::none, "", "show all that is known of a device", of_one_device,
                show_device},
    command_row{"doctor", words_kind::none, "", "find out what keeps a device from working, and what to do",
                of_one_device, diagnose},
    command_row{
        "version", words_kind::none, "", "print the versions of program and library", {}, show_version},
};

} // namespace

std::span<const command_row> commands() noexcept {
    return command_rows;
}

std::span<const option_row> options() noexcept {
    return option_rows;
}

const command_row* find_command(std::string_view name) noexcept {
    const auto found = std::find_if(command_rows.begin(), command_rows.end(),
                                    [name](const command_row& row) { return row.name == name; });
    return found == command_rows.end() ? nullptr : &*found;
}

const option_row& row_of(option_id id) noexcept {
    return *std::find_if(option_rows.begin(), option_rows.end(),
                         [id](const option_row& row) { return row.id == id; });
}

bool is_common(option_id option) noexcept {
    return std::find(of_each_command.begin(), of_each_command.end(), option) != of_each_command.end();
}

} // namespace vantu::orvanta::ctl
