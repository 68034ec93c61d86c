// The terminal as a console.
#include "ctl/report/terminal.hpp"

#include <cstdlib>
#include <windows.h>

namespace vantu::orvanta::ctl {

bool output_is_terminal() {
    HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    DWORD mode = 0;
    return GetConsoleMode(output, &mode) != 0 &&
           SetConsoleMode(output, mode | ENABLE_PROCESSED_OUTPUT | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

bool output_has_colour() {
    const char* refused = std::getenv("NO_COLOR");
    return output_is_terminal() && (refused == nullptr || *refused == '\0');
}

std::size_t terminal_columns() {
    CONSOLE_SCREEN_BUFFER_INFO info{};
    if (GetConsoleScreenBufferInfo(GetStdHandle(STD_OUTPUT_HANDLE), &info) == 0) {
        return 80;
    }
    return static_cast<std::size_t>(info.srWindow.Right - info.srWindow.Left + 1);
}

std::size_t terminal_lines() {
    CONSOLE_SCREEN_BUFFER_INFO info{};
    if (GetConsoleScreenBufferInfo(GetStdHandle(STD_OUTPUT_HANDLE), &info) == 0) {
        return 24;
    }
    return static_cast<std::size_t>(info.srWindow.Bottom - info.srWindow.Top + 1);
}

} // namespace vantu::orvanta::ctl
