// The failures that a session tells of, as sentences.
#pragma once

#include "vantu/orvanta/result.hpp"

#include <cstdint>
#include <string>
#include <string_view>

namespace vantu::orvanta {

// "what: text of the code", and what to do about it where that is known. A code of 0 is no failure and
// becomes an unexpected error.
[[nodiscard]] failure failure_of(std::int32_t code, std::string_view what);

// The same for a connection that could not be made. The port is empty for the service's own.
[[nodiscard]] failure connect_failure(std::int32_t code, const std::string& service_port);

// The failure of a request that the loss of its connection has ended.
[[nodiscard]] failure loss_failure(std::string_view what, std::string_view how);

// The failure of a waiting form that was called from a callback.
[[nodiscard]] failure called_from_a_callback(std::string_view what);

} // namespace vantu::orvanta
