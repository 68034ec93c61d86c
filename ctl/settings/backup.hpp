// A device's settings in a file: {"schema": "orvanta-backup", "version": 1, "device", "settings"}.
#pragma once

#include "ctl/settings/values.hpp"
#include "vantu/orvanta/device.hpp"

#include <string>

namespace vantu::orvanta::ctl {

struct backup {
    std::string uuid;
    device_type type{device_type::none};
    std::uint16_t short_id{0};
    value_set settings; // of all keys that can be set
};

// The text of a file.
[[nodiscard]] std::string text_of(const backup& kept);

// Throws std::runtime_error with one line that says what is wrong, on which line, and what would be right:
// text that is no JSON, a member that is unknown, missing, given twice or no such value, another schema or
// version.
[[nodiscard]] backup backup_in(const std::string& text);

// All throw failure_with_status (refused), whose text begins with the path.

// Reads a file.
[[nodiscard]] backup read_backup(const std::string& path);
// Refuses a path at which there is something else than a file, such as a link.
void require_file_or_nothing(const std::string& path);
// Writes the file whole or, when that fails, leaves it as it was.
void write_backup(const std::string& path, const backup& kept);

} // namespace vantu::orvanta::ctl
