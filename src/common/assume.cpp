#include "vantu/orvanta/common/assume.hpp"

#include "vantu/orvanta/common/log.hpp"
#include "vantu/orvanta/common/platform.hpp"

#include <cstdlib>
#include <string>

namespace vantu::orvanta {

void assumption_failed() {
    platform::debug_break();
    std::abort();
}

void report_failed_assumption(const source_location& where, const char* message) {
    log_or_drop(log_level::error, where, [message] { return std::string(message); });
    assumption_failed();
}

} // namespace vantu::orvanta
