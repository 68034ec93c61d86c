// Reads the command line by the tables.
#pragma once

#include "ctl/arguments/request.hpp"

#include <string>

namespace vantu::orvanta::ctl {

// Thrown when the command line asks for help in place of a command's work.
struct help_asked {
    std::string text;
};

// Options may stand before and after the command. Throws help_asked, and failure_with_status (wrong_usage).
request parse(int argument_count, const char* const* arguments);

// Whether the command line asks for JSON, also when it cannot be read otherwise: its error is told in JSON
// then.
bool asks_for_json(int argument_count, const char* const* arguments) noexcept;

} // namespace vantu::orvanta::ctl
