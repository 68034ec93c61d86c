// Keeps the log lines of a test instead of printing them, for as long as the object lives.
#pragma once

#include "vantu/orvanta/common/log.hpp"

#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

namespace orvanta_tests {

class captured_log {
  public:
    struct entry {
        std::uint64_t opaque;
        vantu::orvanta::log_level level;
        std::string path;
        std::uint64_t line;
        std::string message;
    };

    captured_log() {
        vantu::orvanta::set_log_sink([this](std::uint64_t opaque, vantu::orvanta::log_level level,
                                            const std::string& path, std::uint64_t line,
                                            const std::string& message) {
            const std::lock_guard lock(mutex_);
            entries_.push_back({opaque, level, path, line, message});
        });
    }
    ~captured_log() { vantu::orvanta::set_log_sink(nullptr); }
    captured_log(const captured_log&) = delete;
    captured_log& operator=(const captured_log&) = delete;

    [[nodiscard]] std::vector<entry> entries() const {
        const std::lock_guard lock(mutex_);
        return entries_;
    }

    // "WARNING text" for each line, in order.
    [[nodiscard]] std::vector<std::string> lines() const {
        static constexpr const char* words[] = {"DEBUG ", "INFO ", "WARNING ", "ERROR "};
        std::vector<std::string> texts;
        for (const entry& line : entries()) {
            texts.push_back(words[static_cast<std::uint32_t>(line.level)] + line.message);
        }
        return texts;
    }

  private:
    mutable std::mutex mutex_;
    std::vector<entry> entries_;
};

} // namespace orvanta_tests
