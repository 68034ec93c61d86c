// Standard input by poll and read: it is asked first, so that the descriptor, which other programs may
// share, need not be made non-blocking.
#include "simulator/control/console_input.hpp"

#include <array>
#include <cerrno>
#include <cstddef>
#include <poll.h>
#include <string_view>
#include <unistd.h>

namespace vantu::orvanta::simulator {
namespace {

// Longer lines come in pieces, so that a file without line ends does not fill the memory.
constexpr std::size_t longest_line = 65536;

bool has_something() {
    pollfd asked{STDIN_FILENO, POLLIN, 0};
    return ::poll(&asked, 1, 0) > 0;
}

std::string without_return(std::string_view line) {
    if (line.ends_with('\r')) {
        line.remove_suffix(1);
    }
    return std::string(line);
}

} // namespace

bool standard_input_is_terminal() noexcept {
    return ::isatty(STDIN_FILENO) == 1;
}

console_input::console_input() = default;
console_input::~console_input() = default;

std::vector<std::string> console_input::take_lines() {
    std::vector<std::string> lines;
    if (ended_ || !has_something()) {
        return lines;
    }
    std::array<char, 4096> piece{};
    const ssize_t count = ::read(STDIN_FILENO, piece.data(), piece.size());
    if (count < 0) {
        ended_ = errno != EINTR && errno != EAGAIN;
        return lines;
    }
    for (const char letter : std::string_view(piece.data(), static_cast<std::size_t>(count))) {
        if (letter == '\n' || begun_.size() == longest_line) {
            lines.push_back(without_return(begun_));
            begun_.clear();
        }
        if (letter != '\n') {
            begun_ += letter;
        }
    }
    // On a terminal the end may be typed in the midst of things; it is the end all the same.
    ended_ = count == 0;
    if (ended_ && !begun_.empty()) {
        lines.push_back(without_return(begun_));
        begun_.clear();
    }
    return lines;
}

} // namespace vantu::orvanta::simulator
