// The process-wide logger: one call, one line, never interleaved.
// Debug and info lines go to standard output, warnings and errors to standard error, unless a sink
// has been set. There is no time stamp.
#pragma once

#include "vantu/orvanta/common/source_locations.hpp"

#include <cstdint>
#include <functional>
#include <new>
#include <string>

namespace vantu::orvanta {

enum class log_level : std::uint32_t {
    debug = 0,
    info = 1,
    warning = 2,
    error = 3,
};

// Receives every log call in place of the default writer: an opaque value (0 in this system), the
// level, the source path, the line and the message. Runs on the logging thread with the logger's
// lock held: it is never entered twice at once, and it must not log.
using log_sink = std::function<void(std::uint64_t opaque, log_level level, const std::string& path,
                                    std::uint64_t line, const std::string& message)>;

// Writes one line, or hands the call to the sink. The message is complete: nothing in it is expanded
// but "%%", which prints one percent sign. Any thread. Throws std::system_error when the logger's
// lock cannot be taken, std::bad_alloc when memory runs out, and what the sink throws.
void log(log_level level, const std::string& path, std::uint64_t line, const std::string& message);

// The same for a location that is part of the line's contract.
void log(log_level level, const source_location& where, const std::string& message);

// Lines below this level are logged nowhere from here on. Any thread. Until the first call all are logged,
// but for what log_scope holds back.
void set_log_level(log_level least);

// Whether lines of this level are logged somewhere. Costs one atomic load.
[[nodiscard]] bool is_logged(log_level level);

// While it lives, the calling thread's lines go to a sink of its own in place of the process's. With an empty
// one they go where they go without it, but for lines below a warning, which the standard streams then get
// only after a call of set_log_level.
class log_scope {
  public:
    // The sink outlives the scope.
    explicit log_scope(const log_sink& sink);
    ~log_scope();
    log_scope(const log_scope&) = delete;
    log_scope& operator=(const log_scope&) = delete;

  private:
    const log_sink* before_;
};

// Logs what compose() returns, if the level is logged; drops the line when memory runs out on the way.
template <typename Compose>
void log_or_drop(log_level level, const source_location& where, const Compose& compose) {
    if (!is_logged(level)) {
        return;
    }
    try {
        log(level, where, compose());
    } catch (const std::bad_alloc&) { // NOLINT(bugprone-empty-catch): the line is what is dropped
    }
}

// Installs a sink for the whole process; an empty one brings the default writer back. Any thread. The
// earlier sink is destroyed after the logger's lock is released. Allocates nothing.
void set_log_sink(log_sink sink);

// The writer used while no sink is set: "LEVEL file line MSG message", where file is what follows
// the last '/' or '\' of the path. Levels above error print as error. The line has left the
// program's buffers when the call returns. Throws std::system_error (value_too_large) for a path
// longer than the largest 32-bit signed value.
void write_default_log_line(log_level level, const std::string& path, std::uint64_t line,
                            const std::string& message);

} // namespace vantu::orvanta

// Logs with the file and line of the call. The message is composed inside: a line for which there is no
// memory is dropped, so that no call of the library fails for the sake of its log.
#define log_here(level, ...)                                                                                 \
    ::vantu::orvanta::log_or_drop(level, {__FILE__, __LINE__}, [&]() -> std::string { return __VA_ARGS__; })
