#include "ctl/arguments/command_table.hpp"

#include "ctl/commands/commands.hpp"
#include "ctl/settings/keys.hpp"
#include "vantu/orvanta/common/format.hpp"

#include <algorithm>
#include <array>

namespace vantu::orvanta::ctl {
namespace {

using enum option_id;

constexpr std::array option_rows{
    option_row{device, "--device", "D", "the device: its id, its short id, or a part of its uuid"},
    option_row{save, "--save", "", "save on the device afterwards, read again and compare"},
    option_row{dry_run, "--dry-run", "", "set and save nothing, and show what would change"},
    option_row{other_device, "--other-device", "", "restore the file of another device"},
    option_row{duration, "--for", "TIME", "for how long at most, as in 500ms or 5m; without it, no end"},
    option_row{rate, "--rate", "HZ", "print so many samples a second at most"},
    option_row{format, "--format", "FORMAT",
               "live (only on a terminal, the default there), lines, csv or json"},
    option_row{plot, "--plot", "FILE", "write a picture of the curves, in SVG"},
    option_row{capture, "--capture", "FILE",
               "write the datagrams of both sides into a file in the pcap format"},
    option_row{timeout, "--timeout", "TIME", "the longest time of the whole command, as in 500ms or 2s"},
    option_row{json, "--json", "", "print results as JSON, one document a line, and errors too"},
    option_row{verbose, "-v", "", "print the library's log on standard error"},
};

constexpr std::array format_rows{
    format_row{"live", watch_format::live, "bars and numbers that change in their place"},
    format_row{"lines", watch_format::lines, "a line for people each sample"},
    format_row{"csv", watch_format::csv, "a line of values each sample, after one of names"},
    format_row{"json", watch_format::json, "a document each sample"},
};

constexpr std::array of_each_command{timeout, json, verbose};
constexpr std::array of_the_service{capture};
constexpr std::array of_one_device{device, capture};
constexpr std::array of_set{device, save, dry_run, capture};
constexpr std::array of_restore{device, save, dry_run, other_device, capture};
constexpr std::array of_wait{device, duration, capture};
constexpr std::array of_watch{device, duration, rate, format, plot, capture};

constexpr std::array command_rows{
    command_row{"list", words_kind::none, "", "list the devices", of_the_service, list_devices},
    command_row{"info", words_kind::none, "", "show all that is known of a device", of_one_device,
                show_device},
    command_row{"get", words_kind::keys, "[KEY...]",
                "print values: of one key the value alone, else KEY=VALUE lines", of_one_device, get_values},
    command_row{"set", words_kind::assignments, "KEY=VALUE...", "set values, and print old and new", of_set,
                set_values},
    command_row{"save", words_kind::none, "", "save the configuration on the device", of_one_device,
                save_configuration},
    command_row{"backup", words_kind::file, "FILE", "write the device's settings into a file", of_one_device,
                back_up},
    command_row{"restore", words_kind::file, "FILE", "set all settings as in a file", of_restore, restore},
    command_row{"diff", words_kind::file, "FILE", "print where file and device differ", of_one_device,
                show_differences},
    command_row{"watch", words_kind::none, "", "show what a device measures, as it comes", of_watch,
                watch_device},
    command_row{"wait", words_kind::event, "[EVENT]", "wait for a device, its removal or the service",
                of_wait, wait_for_event},
    command_row{"doctor", words_kind::none, "", "find out what keeps a device from working, and what to do",
                of_one_device, diagnose},
    command_row{
        "replay", words_kind::file, "FILE", "show what the library makes of a capture", {}, replay_capture},
    command_row{
        "version", words_kind::none, "", "print the versions of program and library", {}, show_version},
};

constexpr command_row completion_row{
    "complete", words_kind::none, "-- WORD...", "print what the last word may become", {}, print_candidates};

} // namespace

std::span<const command_row> commands() noexcept {
    return command_rows;
}

std::span<const option_row> options() noexcept {
    return option_rows;
}

std::span<const format_row> formats() noexcept {
    return format_rows;
}

std::vector<word_row> words_of(words_kind kind) {
    std::vector<word_row> words;
    switch (kind) {
    case words_kind::none:
    case words_kind::file:
        return {};
    case words_kind::keys:
        for (const key_row& row : keys()) {
            words.push_back({std::string(row.name), std::string(row.meaning)});
        }
        return words;
    case words_kind::assignments:
        for (const key_row& row : keys()) {
            if (row.can_be_set) {
                words.push_back(
                    {std::string(row.name), formatted("{}: {}", row.meaning, description_of(row.kind))});
            }
        }
        return words;
    case words_kind::event:
        return {{"device", "an Orvanta3 is there, or the device that --device names; the default"},
                {"removal", "a device that is there is unplugged"},
                {"service", "a service answers"}};
    }
    return {};
}

const command_row& completion_command() noexcept {
    return completion_row;
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

bool goes_with(option_id option, const command_row* command) noexcept {
    return is_common(option) ||
           (command != nullptr &&
            std::find(command->options.begin(), command->options.end(), option) != command->options.end());
}

bool is_common(option_id option) noexcept {
    return std::find(of_each_command.begin(), of_each_command.end(), option) != of_each_command.end();
}

} // namespace vantu::orvanta::ctl
