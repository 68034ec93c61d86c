// In the place of common/assume.cpp: a failed assumption throws, so that a harness can tell the two reads of
// a handshake that are not checked by design from any other.
#include "sessions/checked_connection.hpp"
#include "vantu/orvanta/common/assume.hpp"

namespace vantu::orvanta {

void assumption_failed() {
    throw orvanta_tests::failed_assumption("an assumption failed");
}

void report_failed_assumption(const source_location& /*where*/, const char* message) {
    throw orvanta_tests::failed_assumption(message);
}

} // namespace vantu::orvanta
