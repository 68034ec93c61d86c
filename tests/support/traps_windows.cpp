// The breakpoint trap as an exception that nobody handles.
#include "support/traps.hpp"

#include <windows.h>

namespace orvanta_tests {
namespace {

LONG CALLBACK step_over_breakpoint(EXCEPTION_POINTERS* exception) {
    if (exception->ExceptionRecord->ExceptionCode != EXCEPTION_BREAKPOINT) {
        return EXCEPTION_CONTINUE_SEARCH;
    }
    ++exception->ContextRecord->Rip; // the trap is an instruction of one byte
    return EXCEPTION_CONTINUE_EXECUTION;
}

} // namespace

bool ended_by_trap(int exit_status) {
    return static_cast<DWORD>(exit_status) == static_cast<DWORD>(EXCEPTION_BREAKPOINT);
}

// The status that the C runtime's abort gives a process.
bool ended_by_abort(int exit_status) {
    return exit_status == 3;
}

void run_past_traps() {
    AddVectoredExceptionHandler(1, step_over_breakpoint);
}

} // namespace orvanta_tests
