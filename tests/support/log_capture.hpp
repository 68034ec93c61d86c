// Takes the process's log lines for as long as it lives, instead of printing them.
#pragma once

#include "vantu/orvanta/common/log.hpp"

#include <cstdint>
#include <mutex>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace orvanta_tests {

using vantu::orvanta::log_level;

struct log_line {
    log_level level;
    std::string path;
    std::uint64_t line;
    std::string message;
    std::uint64_t opaque{0};

    bool operator==(const log_line&) const = default;
};

// NOLINTNEXTLINE(readability-identifier-naming): GoogleTest's
inline void PrintTo(const log_line& line, std::ostream* to) {
    *to << "level " << static_cast<std::uint32_t>(line.level) << ' ' << line.path << ':' << line.line << ' '
        << line.message << ", opaque " << line.opaque;
}

// One at a time: the sink is the process's.
class log_capture {
  public:
    log_capture() {
        vantu::orvanta::set_log_sink([this](std::uint64_t opaque, log_level level, const std::string& path,
                                            std::uint64_t line, const std::string& message) {
            const std::lock_guard lock(mutex_);
            entries_.push_back({level, path, line, message, opaque});
        });
    }
    ~log_capture() { vantu::orvanta::set_log_sink(nullptr); }
    log_capture(const log_capture&) = delete;
    log_capture& operator=(const log_capture&) = delete;

    // All lines that it holds, in order.
    [[nodiscard]] std::vector<log_line> entries() const {
        const std::lock_guard lock(mutex_);
        return entries_;
    }
    // "WARNING text" for each.
    [[nodiscard]] std::vector<std::string> lines() const {
        static constexpr const char* words[] = {"DEBUG ", "INFO ", "WARNING ", "ERROR "};
        std::vector<std::string> texts;
        for (const log_line& line : entries()) {
            texts.push_back(words[static_cast<std::uint32_t>(line.level)] + line.message);
        }
        return texts;
    }

    // The same lines, which it then no longer holds.
    [[nodiscard]] std::vector<log_line> take() {
        const std::lock_guard lock(mutex_);
        return std::exchange(entries_, {});
    }
    [[nodiscard]] std::vector<std::string> take_messages() {
        std::vector<std::string> messages;
        for (log_line& line : take()) {
            messages.push_back(std::move(line.message));
        }
        return messages;
    }

  private:
    mutable std::mutex mutex_;
    std::vector<log_line> entries_;
};

} // namespace orvanta_tests
