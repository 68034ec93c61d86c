/** @file
 * A thread that polls a context and hands each event to a handler. */
#ifndef VANTU_ORVANTA_POLL_THREAD_H
#define VANTU_ORVANTA_POLL_THREAD_H

#include "vantu/orvanta/connection.h"

#ifdef __cplusplus
extern "C" {
#endif

/** A running polling thread; opaque. */
typedef struct vantu_orvanta_poll_thread vantu_orvanta_poll_thread;

/** Receives each event that a polling thread takes, on that thread, with no lock of the library held. It may
 * call any function of this library but vantu_orvanta_poll_thread_stop for its own thread and
 * vantu_orvanta_disconnect.
 * @param user  as it was given to vantu_orvanta_poll_thread_start
 * @param event valid until the handler returns */
typedef void (*vantu_orvanta_event_handler)(void* user, const vantu_orvanta_event* event);

/** Starts a thread that polls the context every 100 microseconds while nothing happens and back to back while
 * something does, and hands each event to the handler. It takes no signals. It ends by itself on the first
 * poll that returns anything but 0: see vantu_orvanta_poll_thread_result. Does not block; any thread. Throws
 * std::system_error (resource_unavailable_try_again) when the system starts no thread.
 * @param context must live until the thread was stopped
 * @param handler called for each event; what it throws ends the process
 * @param user    handed to the handler; may be null
 * @return the thread, which vantu_orvanta_poll_thread_stop frees; null for a null context or handler and when
 *         memory runs out */
VANTU_ORVANTA_NODISCARD VANTU_ORVANTA_API vantu_orvanta_poll_thread* vantu_orvanta_poll_thread_start(
    vantu_orvanta_context* context, vantu_orvanta_event_handler handler, void* user);

/** Tells the code that ended a polling thread. Does not block; any thread, until
 * vantu_orvanta_poll_thread_stop.
 * @return the code of the last poll; 0 while the thread runs and for a null */
VANTU_ORVANTA_API uint32_t vantu_orvanta_poll_thread_result(const vantu_orvanta_poll_thread* thread);

/** Stops a polling thread, waits for its end (a handler that is running is waited for) and frees it.
 *
 * Throws std::system_error: resource_deadlock_would_occur when called from that very thread, which then ends
 * once its handler returns and is still to be stopped from another thread; no_such_process when the thread
 * cannot be joined. Throws std::bad_alloc in place of either when there is no memory for it.
 * @param thread null is ignored */
VANTU_ORVANTA_API void vantu_orvanta_poll_thread_stop(vantu_orvanta_poll_thread* thread);

#ifdef __cplusplus
}
#endif

#endif
