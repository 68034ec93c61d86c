// The breakpoint trap as a signal.
#include "support/traps.hpp"

#include <csignal>
#include <gtest/gtest.h>

namespace orvanta_tests {

bool ended_by_trap(int exit_status) {
    return testing::KilledBySignal(SIGTRAP)(exit_status);
}

bool ended_by_abort(int exit_status) {
    return testing::KilledBySignal(SIGABRT)(exit_status);
}

void run_past_traps() {
    std::signal(SIGTRAP, SIG_IGN);
}

} // namespace orvanta_tests
