// Standard input by poll and read: it is asked first, so that the descriptor, which other programs may
// share, need not be made non-blocking.
#include "simulator/control/console_input.hpp"

#include <array>
#include <cerrno>
#include <cstddef>
#include <poll.h>
#include <unistd.h>

namespace vantu::orvanta::simulator {
namespace {

bool has_something() {
    pollfd asked{STDIN_FILENO, POLLIN, 0};
    return ::poll(&asked, 1, 0) > 0;
}

} // namespace

bool standard_input_is_terminal() noexcept {
    return ::isatty(STDIN_FILENO) == 1;
}

std::vector<std::string> console_input::take_lines() {
    if (ended_ || !has_something()) {
        return {};
    }
    std::array<char, 4096> piece{};
    const ssize_t count = ::read(STDIN_FILENO, piece.data(), piece.size());
    if (count > 0) {
        return splitter_.take({piece.data(), static_cast<std::size_t>(count)});
    }
    // On a terminal the end may be typed in the midst of things; it is the end all the same.
    ended_ = count == 0 || (errno != EINTR && errno != EAGAIN);
    return ended_ ? splitter_.end() : std::vector<std::string>{};
}

} // namespace vantu::orvanta::simulator
