// Takes the process's log lines while it lives.
#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

namespace orvanta_tests {

enum : std::uint32_t { debug_level = 0, info_level = 1, warning_level = 2, error_level = 3 };

struct log_line {
    std::uint32_t level;
    std::string path;
    std::uint64_t line;
    std::string message;

    bool operator==(const log_line&) const = default;
};

void PrintTo(const log_line& line, std::ostream* to); // NOLINT(readability-identifier-naming): GoogleTest's

// One at a time.
class log_capture {
  public:
    log_capture();
    ~log_capture();
    log_capture(const log_capture&) = delete;
    log_capture& operator=(const log_capture&) = delete;

    // The lines since it was last asked.
    [[nodiscard]] std::vector<log_line> take();
    [[nodiscard]] std::vector<std::string> take_messages();
};

} // namespace orvanta_tests
