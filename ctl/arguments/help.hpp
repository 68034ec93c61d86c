// The help of the program and of each command, out of the tables.
#pragma once

#include <string>

namespace vantu::orvanta::ctl {

struct command_row;
struct option_row;

// "--device D", "--json"
std::string option_text(const option_row& row);

std::string help_of_program();
std::string help_of_command(const command_row& row);

} // namespace vantu::orvanta::ctl
