// The flat API's requests without a connection, and a clock that is set by hand: class client is linked with
// these in the place of the layers below, so that any request can be sent, refused or answered before its
// send returns, at any time.
#pragma once

#include <cstdint>
#include <functional>

namespace orvanta_fuzz {

// Called with the tag of each request; what it returns is the request's code.
inline std::function<std::int32_t(std::uint8_t tag)> on_request;

// The steady clock.
inline std::int64_t now_ns = 1'000'000'000;

} // namespace orvanta_fuzz
