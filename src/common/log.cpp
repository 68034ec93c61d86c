#define FMT_HEADER_ONLY 1 // the one place where fmt's code is compiled

#include "vantu/orvanta/common/log.hpp"

#include "vantu/orvanta/common/format.hpp"
#include "vantu/orvanta/common/platform.hpp"

#include <atomic>
#include <cstddef>
#include <cstdio>
#include <mutex>
#include <new>
#include <string_view>
#include <utility>

namespace vantu::orvanta {
namespace {

struct logger {
    std::uint64_t opaque{0};
    log_sink sink;
    std::mutex mutex;
};

// Never destroyed: other threads and static destructors may still log at exit. Needs no memory of its own.
logger& the_logger() {
    alignas(logger) static std::byte place[sizeof(logger)];
    static auto* instance = new (place) logger;
    return *instance;
}

constexpr std::uint32_t no_level_set = ~std::uint32_t{0};
std::atomic<std::uint32_t> least_level{no_level_set};

// The innermost scope's; null outside of all.
thread_local const log_sink* sink_of_this_thread = nullptr;

bool standard_streams_get(log_level level) {
    return sink_of_this_thread == nullptr || level >= log_level::warning ||
           least_level.load(std::memory_order_relaxed) != no_level_set;
}

const char* prefix_of(log_level level) {
    switch (level) {
    case log_level::debug:
        return "DEBUG";
    case log_level::info:
        return "INFO";
    case log_level::warning:
        return "WARNING";
    case log_level::error:
        break;
    }
    return "ERROR";
}

// The text is printed as a format without arguments: "%%" may stand, every other percent sign is
// doubled so that it prints as itself.
std::string harmless_format(std::string_view text) {
    std::string format;
    format.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        format += text[i];
        if (text[i] == '%') {
            format += '%';
            if (i + 1 < text.size() && text[i + 1] == '%') {
                ++i;
            }
        }
    }
    return format;
}

} // namespace

std::string formatted_arguments(fmt::string_view text, fmt::format_args arguments) {
    return fmt::vformat(text, arguments);
}

void write_default_log_line(log_level level, const std::string& path, std::uint64_t line,
                            const std::string& message) {
    const std::string text = harmless_format(
        formatted("{} {} {} MSG {}\n", prefix_of(level), platform::file_name_of(path), line, message));
    const bool to_output = level == log_level::debug || level == log_level::info;
    if (!to_output) {
        std::fflush(stdout);
    }
    std::FILE* stream = to_output ? stdout : stderr;
#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-security"
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#endif
    std::fprintf(stream, text.c_str());
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif
    std::fflush(stream);
}

void set_log_level(log_level least) {
    least_level.store(static_cast<std::uint32_t>(least), std::memory_order_relaxed);
}

bool is_logged(log_level level) {
    const std::uint32_t least = least_level.load(std::memory_order_relaxed);
    return least == no_level_set || static_cast<std::uint32_t>(level) >= least;
}

log_scope::log_scope(const log_sink& sink) : before_(std::exchange(sink_of_this_thread, &sink)) {}

log_scope::~log_scope() {
    sink_of_this_thread = before_;
}

void log(log_level level, const std::string& path, std::uint64_t line, const std::string& message) {
    if (!is_logged(level)) {
        return;
    }
    // The call owns what it hands out, whatever a sink does to the original.
    const std::string owned = message; // NOLINT(performance-unnecessary-copy-initialization)
    logger& target = the_logger();
    const std::lock_guard lock(target.mutex);
    if (sink_of_this_thread != nullptr && *sink_of_this_thread) {
        (*sink_of_this_thread)(target.opaque, level, path, line, owned);
    } else if (target.sink) {
        target.sink(target.opaque, level, path, line, owned);
    } else if (standard_streams_get(level)) {
        write_default_log_line(level, path, line, owned);
    }
}

void log(log_level level, const source_location& where, const std::string& message) {
    log(level, where.path, where.line, message);
}

void set_log_sink(log_sink sink) {
    logger& target = the_logger();
    const std::lock_guard lock(target.mutex);
    target.sink.swap(sink);
}

} // namespace vantu::orvanta
