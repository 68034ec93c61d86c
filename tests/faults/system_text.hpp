// The tables state log lines with the texts that Linux has for its errors.
#pragma once

#include <string>

namespace orvanta_tests {

// A log line with the text of Linux in the place of that of the system.
[[nodiscard]] std::string with_text_of_linux(std::string message);

} // namespace orvanta_tests
