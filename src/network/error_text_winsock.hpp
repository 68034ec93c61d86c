// Winsock's error numbers as text.
#pragma once

#include <cstdint>
#include <string>

namespace vantu::orvanta {

// The system's text for an error as one line; where the system has none, a text of our own for the
// errors of sockets; "unknown" for the rest.
[[nodiscard]] std::string winsock_error_text(std::uint32_t error);

} // namespace vantu::orvanta
