// Ctrl-C and Ctrl-Break, as console events.
#include "ctl/report/interruption.hpp"

#include <atomic>
#include <windows.h>

namespace vantu::orvanta::ctl {
namespace {

std::atomic<bool> interrupted{false};

// The system calls this on a thread of its own; what is not handled ends the process.
BOOL WINAPI remember(DWORD event) {
    const bool is_first = !interrupted.exchange(true);
    return is_first && (event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT) ? TRUE : FALSE;
}

} // namespace

void watch_for_interruption() {
    SetConsoleCtrlHandler(remember, TRUE);
}

bool is_interrupted() noexcept {
    return interrupted.load();
}

} // namespace vantu::orvanta::ctl
