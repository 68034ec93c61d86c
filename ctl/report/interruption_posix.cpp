// Ctrl-C and termination, as signals.
#include "ctl/report/interruption.hpp"

#include <csignal>

namespace vantu::orvanta::ctl {
namespace {

volatile std::sig_atomic_t interrupted = 0;

void remember(int) {
    interrupted = 1;
}

} // namespace

void watch_for_interruption() {
    struct sigaction action {};
    action.sa_handler = &remember;
    // The next one finds the system's default. A write to a slow reader goes on, so that no line is cut.
    action.sa_flags = static_cast<int>(SA_RESETHAND) | SA_RESTART;
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
}

bool is_interrupted() noexcept {
    return interrupted != 0;
}

} // namespace vantu::orvanta::ctl
