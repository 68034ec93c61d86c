// Standard input on Windows. A pipe is asked first and a file is read; a console keeps its reader until a
// line is complete, so a thread of its own reads that, and a pipe that cannot be asked.
#include "simulator/control/console_input.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <mutex>
#include <optional>
#include <string_view>
#include <thread>
#include <utility>
#include <windows.h>

namespace vantu::orvanta::simulator {
namespace {

// The outcome of a read: bytes, or nothing and the end.
struct piece {
    std::string bytes;
    bool is_end{false};
};

HANDLE standard_input() noexcept {
    return GetStdHandle(STD_INPUT_HANDLE);
}

// Waits for a console's line.
piece read_piece() {
    std::array<char, 4096> bytes{};
    DWORD count = 0;
    const bool read =
        ReadFile(standard_input(), bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr) != 0;
    std::string_view text(bytes.data(), count);
    // Ctrl-Z at the head of a line ends a console's input.
    const bool typed_end = standard_input_is_terminal() && text.starts_with('\x1A');
    return {typed_end ? "" : std::string(text), !read || count == 0 || typed_end};
}

// The bytes that the thread has read from standard input and nobody has taken. The thread never ends before
// the program does, so neither does this.
class reader_thread {
  public:
    static reader_thread& instance() {
        static auto* reader = new reader_thread;
        return *reader;
    }

    [[nodiscard]] piece take() {
        const std::lock_guard lock(mutex_);
        return {std::exchange(waiting_.bytes, {}), waiting_.is_end};
    }

  private:
    reader_thread() {
        std::thread([this] { read(); }).detach();
    }

    void read() {
        for (bool is_end = false; !is_end;) {
            const piece next = read_piece();
            const std::lock_guard lock(mutex_);
            waiting_.bytes += next.bytes;
            is_end = waiting_.is_end = next.is_end;
        }
    }

    std::mutex mutex_;
    piece waiting_;
};

// Nothing when a read would wait.
std::optional<piece> next_piece() {
    if (standard_input_is_terminal()) {
        return reader_thread::instance().take();
    }
    if (GetFileType(standard_input()) == FILE_TYPE_PIPE) {
        DWORD waiting = 0;
        if (PeekNamedPipe(standard_input(), nullptr, 0, nullptr, &waiting, nullptr) == 0) {
            // Wine's pipes from Linux programs cannot be asked.
            return GetLastError() == ERROR_NOT_SUPPORTED ? reader_thread::instance().take() : piece{"", true};
        }
        if (waiting == 0) {
            return std::nullopt;
        }
    }
    return read_piece();
}

} // namespace

bool standard_input_is_terminal() noexcept {
    DWORD mode = 0;
    return GetConsoleMode(standard_input(), &mode) != 0;
}

std::vector<std::string> console_input::take_lines() {
    const std::optional<piece> next = ended_ ? std::nullopt : next_piece();
    if (!next) {
        return {};
    }
    std::vector<std::string> lines = splitter_.take(next->bytes);
    ended_ = next->is_end;
    if (ended_) {
        std::ranges::move(splitter_.end(), std::back_inserter(lines));
    }
    return lines;
}

} // namespace vantu::orvanta::simulator
