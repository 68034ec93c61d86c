// The terminal by its file descriptor.
#include "ctl/report/terminal.hpp"

#include <cstdlib>
#include <string_view>
#include <sys/ioctl.h>
#include <unistd.h>

namespace vantu::orvanta::ctl {

bool output_is_terminal() {
    return isatty(STDOUT_FILENO) == 1;
}

bool output_has_colour() {
    const char* refused = std::getenv("NO_COLOR");
    const char* kind = std::getenv("TERM");
    return output_is_terminal() && (refused == nullptr || *refused == '\0') &&
           (kind == nullptr || std::string_view(kind) != "dumb");
}

std::size_t terminal_columns() {
    winsize size{};
    return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col != 0 ? size.ws_col : 80;
}

std::size_t terminal_lines() {
    winsize size{};
    return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_row != 0 ? size.ws_row : 24;
}

} // namespace vantu::orvanta::ctl
