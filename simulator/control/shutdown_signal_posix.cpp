// Requests to end the program, as signals.
#include "simulator/control/shutdown_signal.hpp"

#include <csignal>

namespace vantu::orvanta::simulator {
namespace {

volatile std::sig_atomic_t requested = 0;

void remember(int) {
    requested = 1;
}

} // namespace

void watch_for_shutdown() {
    struct sigaction action {};
    action.sa_handler = &remember;
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
}

bool shutdown_was_requested() noexcept {
    return requested != 0;
}

} // namespace vantu::orvanta::simulator
