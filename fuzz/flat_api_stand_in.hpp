// The flat API's requests without a connection: class client is linked with these in the place of the
// runtime layer, so that any request can be sent, refused or answered before its send returns.
#pragma once

#include <cstdint>
#include <functional>

namespace orvanta_fuzz {

// Called with the tag of each request; what it returns is the request's code.
inline std::function<std::int32_t(std::uint8_t tag)> on_request;

} // namespace orvanta_fuzz
