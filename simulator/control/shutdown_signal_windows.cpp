// Requests to end the program, as console events: Ctrl-C, Ctrl-Break, a closed window, a log-off.
#include "simulator/control/shutdown_signal.hpp"

#include <atomic>
#include <windows.h>

namespace vantu::orvanta::simulator {
namespace {

std::atomic<bool> requested{false};

// The system calls this on a thread of its own.
BOOL WINAPI remember(DWORD event) {
    requested.store(true);
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) {
        // The system ends the process as soon as this returns, or after a time of its own: until then
        // the program has time to say goodbye.
        Sleep(INFINITE);
    }
    return TRUE;
}

} // namespace

// A closed pipe is an ordinary error here without further ado.
void watch_for_shutdown() {
    SetConsoleCtrlHandler(remember, TRUE);
}

bool shutdown_was_requested() noexcept {
    return requested.load();
}

} // namespace vantu::orvanta::simulator
