// The failures that a session tells of, as sentences.
#pragma once

#include "vantu/orvanta/result.hpp"

#include <cstdint>
#include <string>
#include <string_view>

namespace vantu::orvanta {

// "what: text of the code", and what to do about it where that is known.
[[nodiscard]] failure failure_of(std::int32_t code, std::string_view what);

// The same for a connection that could not be made. The port is empty for the service's own.
[[nodiscard]] failure connect_failure(std::int32_t code, const std::string& service_port);

// The failure of a waiting form that was called from a callback.
[[nodiscard]] failure called_from_a_callback(std::string_view what);

} // namespace vantu::orvanta
