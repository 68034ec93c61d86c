/** @file
 * Waiting for the service without a tick: in a thread of your own, or in any event loop.
 *
 * A loop that waits and then polls until it gets an empty event hears of everything at once and uses no
 * processor while nothing happens:
 *
 *     for (;;) {
 *         int32_t code = vantu_orvanta_wait(context, 1000000000);
 *         if (code != vantu_orvanta_success && code != vantu_orvanta_timed_out) break;
 *         do {
 *             code = vantu_orvanta_poll(context, &event);
 *             // use the event, or decide what the code means
 *         } while (code == vantu_orvanta_success && event.event_type != vantu_orvanta_event_none);
 *     }
 *
 * An event loop watches vantu_orvanta_wait_handle and sets a timer to vantu_orvanta_next_due in place of the
 * wait; both lead to the same polls. A program uses this or a polling thread, not both. */
#ifndef VANTU_ORVANTA_WAIT_H
#define VANTU_ORVANTA_WAIT_H

#include "vantu/orvanta/connection.h"
#include "vantu/orvanta/error_codes.h"
#include "vantu/orvanta/export.h"

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Sleeps until there is a reason to poll: a datagram, an operation left of the last one, a keep-alive that
 * is due, an error of the socket, a wake, or a signal that the calling thread handled.
 *
 * Blocks with no lock held: other threads may send, read the device table and poll meanwhile. Any thread, but
 * one at a time. It must have returned before the context is disconnected.
 *
 * @param timeout_ns the longest sleep; 0 looks once, UINT64_MAX sleeps without limit
 * @retval vantu_orvanta_success                  poll now, until the event is empty
 * @retval vantu_orvanta_unexpected_error         the system refused, or memory ran out; a warning was logged
 * @retval vantu_orvanta_invalid_argument         the context is null
 * @retval vantu_orvanta_invalid_connection_state the context is not connected, or not any more
 * @retval vantu_orvanta_timed_out                the time has passed, and there is no reason to poll */
VANTU_ORVANTA_NODISCARD VANTU_ORVANTA_API int32_t vantu_orvanta_wait(vantu_orvanta_context* context,
                                                                     uint64_t timeout_ns);

/** Ends the wait under way, or else the next one, as if a datagram had come; on Linux it makes the handle
 * readable until the next poll or wait, on Windows it sets the event. With no wait under way a poll takes it
 * back: look at what you want to tell the waiting thread after the polls, before it waits again.
 *
 * Never blocks but for a poll or connect under way at the first call. Any thread; not a signal handler.
 *
 * @retval vantu_orvanta_success          done
 * @retval vantu_orvanta_unexpected_error as for vantu_orvanta_wait
 * @retval vantu_orvanta_invalid_argument the context is null */
VANTU_ORVANTA_API int32_t vantu_orvanta_wake(vantu_orvanta_context* context);

/** The handle that tells when to poll, for an event loop. It is the same for the context's whole life, before
 * and after the connection too; the context owns it.
 *
 * On Linux it is a file descriptor for poll, select or epoll: readable, level-triggered, while a datagram, an
 * error of the socket or a wake is there. On Windows it is an event for WaitForMultipleObjects, which resets
 * itself with the wait that it ends. Neither tells of operations that are left of a datagram: poll until the
 * event is empty.
 *
 * Never blocks but for a poll or connect under way at the first call. Any thread.
 *
 * @param handle receives the file descriptor, or the HANDLE (a WSAEVENT)
 * @retval vantu_orvanta_success          the handle is valid until vantu_orvanta_disconnect
 * @retval vantu_orvanta_unexpected_error as for vantu_orvanta_wait
 * @retval vantu_orvanta_invalid_argument an argument is null */
VANTU_ORVANTA_API int32_t vantu_orvanta_wait_handle(vantu_orvanta_context* context, intptr_t* handle);

/** When to poll at the latest, so that the connection stays alive: the time of the next keep-alive, or 0
 * while operations are left of the last datagram. Each request puts it off: ask again after a timer has run.
 *
 * Never blocks but for a poll or connect under way. Any thread.
 *
 * @param steady_ns receives nanoseconds of the steady clock: std::chrono::steady_clock; on Linux
 *                  CLOCK_MONOTONIC, on Windows QueryPerformanceCounter
 * @retval vantu_orvanta_success                  done
 * @retval vantu_orvanta_invalid_argument         an argument is null
 * @retval vantu_orvanta_invalid_connection_state the context is not connected */
VANTU_ORVANTA_API int32_t vantu_orvanta_next_due(vantu_orvanta_context* context, uint64_t* steady_ns);

#ifdef __cplusplus
}
#endif

#endif
