// Errors of a command line that cannot be read: they tell which command it is, and what was probably meant.
#pragma once

#include <string>
#include <vector>

namespace vantu::orvanta::ctl {

struct command_row;
struct request;

// All throw failure_with_status (wrong_usage). The command is null before there is one.

[[noreturn]] void refuse(const command_row* command, const std::string& text);

// The first of the words and options that have no place; none means that the command is missing.
[[noreturn]] void refuse_surplus(const command_row* command, const std::vector<std::string>& surplus);

// The words of wait are one event, or none. Keys and files are looked at by their commands.
void expect_known_words(const request& asked);

} // namespace vantu::orvanta::ctl
