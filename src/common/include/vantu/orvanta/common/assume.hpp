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

// Checks an expression and reports a failure at the place of the check. The text of the report is the
// expression as written: each of the two takes it before macros are expanded.
#define assume(...)                                                                                          \
    assume_with_text((::vantu::orvanta::source_location{__FILE__, __LINE__}),                                \
                     "assumption failed: " #__VA_ARGS__, __VA_ARGS__)

// Checks an expression and reports a failure at a location that is part of the check's contract.
#define assume_at(where, ...) assume_with_text(where, "assumption failed: " #__VA_ARGS__, __VA_ARGS__)

// For the two above.
#define assume_with_text(where, text, ...)                                                                   \
    do {                                                                                                     \
        if (!(__VA_ARGS__)) [[unlikely]] {                                                                   \
            ::vantu::orvanta::report_failed_assumption(where, text);                                         \
        }                                                                                                    \
    } while (false)
