// Always-on checks of internal invariants. A failed check logs "assumption failed: " and its
// expression at level error, breaks into an attached debugger and aborts; there is no recovery.
// They guard against programming errors only: received data is length-checked before it is read.
#pragma once

#include "vantu/orvanta/common/source_locations.hpp"

namespace vantu::orvanta {

// Breaks into an attached debugger, then aborts.
[[noreturn]] void assumption_failed();

// Logs the message at level error with the given location, then ends through assumption_failed; without
// memory for the line it ends without it.
[[noreturn]] void report_failed_assumption(const source_location& where, const char* message);

} // namespace vantu::orvanta

// Checks an expression and reports a failure at a location that is part of the check's contract.
#define assume_at(where, ...)                                                                                \
    do {                                                                                                     \
        if (!(__VA_ARGS__)) [[unlikely]] {                                                                   \
            ::vantu::orvanta::report_failed_assumption(where, "assumption failed: " #__VA_ARGS__);           \
        }                                                                                                    \
    } while (false)

// Checks an expression and reports a failure at the place of the check.
#define assume(...) assume_at((::vantu::orvanta::source_location{__FILE__, __LINE__}), __VA_ARGS__)
