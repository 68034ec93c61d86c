// The log sink of tests.
#include "support/log_capture.hpp"

#include "vantu/orvanta/orvanta.h"

#include <mutex>
#include <utility>

namespace orvanta_tests {
namespace {

std::mutex mutex;
std::vector<log_line> lines;

void keep(std::uint64_t, std::uint32_t level, const char* path, std::uint64_t line, const char* message) {
    const std::lock_guard lock(mutex);
    lines.push_back({level, path, line, message});
}

} // namespace

void PrintTo(const log_line& line, std::ostream* to) {
    *to << "level " << line.level << ' ' << line.path << ':' << line.line << ' ' << line.message;
}

log_capture::log_capture() {
    vantu_orvanta_log_sink_set(keep);
}

log_capture::~log_capture() {
    vantu_orvanta_log_sink_set(nullptr);
    const std::lock_guard lock(mutex);
    lines.clear();
}

std::vector<log_line> log_capture::take() {
    const std::lock_guard lock(mutex);
    return std::exchange(lines, {});
}

std::vector<std::string> log_capture::take_messages() {
    std::vector<std::string> messages;
    for (log_line& line : take()) {
        messages.push_back(std::move(line.message));
    }
    return messages;
}

} // namespace orvanta_tests
