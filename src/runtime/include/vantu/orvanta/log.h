/** @file
 * Where the library's log lines go: to the standard streams, or to a sink of the program's own. */
#ifndef VANTU_ORVANTA_LOG_H
#define VANTU_ORVANTA_LOG_H

#include "vantu/orvanta/export.h"

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Log levels, and the stream of each while no sink is set. */
enum vantu_orvanta_log_level {
    vantu_orvanta_log_debug = 0,   /**< standard output */
    vantu_orvanta_log_info = 1,    /**< standard output */
    vantu_orvanta_log_warning = 2, /**< standard error */
    vantu_orvanta_log_error = 3    /**< standard error */
};

/** Receives the library's log lines in place of the standard streams, on the thread that logs, one call at a
 * time. It runs under the logger's lock: it must not log, nor call a function of this library that may. The
 * texts are valid until it returns.
 * @param opaque  0
 * @param level   enum vantu_orvanta_log_level
 * @param path    source file of the line
 * @param line    line in that file
 * @param message text of the line, without an end of line */
typedef void (*vantu_orvanta_log_sink)(uint64_t opaque, uint32_t level, const char* path, uint64_t line,
                                       const char* message);

/** Sends the log lines of the whole process to a sink. Waits for a log call in progress; any thread, but not
 * from a sink.
 * @param sink null brings the standard streams back
 * @retval vantu_orvanta_success always */
VANTU_ORVANTA_API int32_t vantu_orvanta_log_sink_set(vantu_orvanta_log_sink sink);

/** Drops the log lines of the whole process that are below a level. Until the first call all lines are
 * logged, but for those below a warning of class session, which standard output then does not get. Does not
 * block; any thread.
 * @param level enum vantu_orvanta_log_level
 * @retval vantu_orvanta_success          done
 * @retval vantu_orvanta_invalid_argument no such level */
VANTU_ORVANTA_API int32_t vantu_orvanta_log_level_set(uint32_t level);

#ifdef __cplusplus
}
#endif

#endif
