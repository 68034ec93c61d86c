/** @file
 * The context, which is one connection to the device service: create, connect, poll, disconnect. */
#ifndef VANTU_ORVANTA_CONNECTION_H
#define VANTU_ORVANTA_CONNECTION_H

#include "vantu/orvanta/communication/records.h"
#include "vantu/orvanta/error_codes.h"
#include "vantu/orvanta/export.h"

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** One connection; opaque. */
typedef struct vantu_orvanta_context vantu_orvanta_context;

/** Starts the platform's socket layer. Call it once, before the first connect. Does not block. A platform
 * without sockets ends the process.
 * @retval vantu_orvanta_success always */
VANTU_ORVANTA_API int32_t vantu_orvanta_init(void);

/** Makes a new context, not connected. Does not block; any thread.
 * @return the context, which vantu_orvanta_disconnect frees; null when memory runs out */
VANTU_ORVANTA_NODISCARD VANTU_ORVANTA_API vantu_orvanta_context* vantu_orvanta_context_create(void);

/** Connects to the service on its own port (54320), from the first of the local ports 54321 to 54336 on which
 * that works. Blocks for up to 16 reply time-outs; logs a line for each port it tries. Call it from one
 * thread while no other uses the context. A failed call leaves the context as it was.
 * @param name             of the client, at most 31 characters; a longer one ends the process
 * @param value_a          handed to the service as it is; 0 will do
 * @param value_b          the same
 * @param keep_alive_ns    how long the service may wait for a sign of life before it forgets the client, in
 *                         nanoseconds; the poll sends one every second
 * @param reply_timeout_ns how long to wait on each port, in nanoseconds, used in whole milliseconds; 0 waits
 *                         without limit, less than a millisecond looks once
 * @retval vantu_orvanta_success                  connected
 * @retval vantu_orvanta_invalid_argument         context or name is null
 * @retval vantu_orvanta_invalid_connection_state already connected
 * @retval vantu_orvanta_socket_bind_failed       no port gave a connection; an absent service gives this too
 * @retval vantu_orvanta_protocol_parse_failed    the answer is not understood
 * @retval vantu_orvanta_another_client_connected the service serves another client only
 * @retval vantu_orvanta_buffer_full_or_empty     the service has no room for one more
 * @return otherwise a transport code */
VANTU_ORVANTA_NODISCARD VANTU_ORVANTA_API int32_t vantu_orvanta_connect(vantu_orvanta_context* context,
                                                                        const char* name, uint16_t value_a,
                                                                        uint16_t value_b,
                                                                        uint64_t keep_alive_ns,
                                                                        uint64_t reply_timeout_ns);

/** Makes one attempt to connect, from one local port to one service port. Blocks for up to one reply
 * time-out; for the rest as vantu_orvanta_connect.
 * @param client_port      decimal text of at most 256 characters; "0" lets the system choose
 * @param service_port     decimal text of at most 256 characters
 * @param name             as for vantu_orvanta_connect
 * @param value_a          as for vantu_orvanta_connect
 * @param value_b          as for vantu_orvanta_connect
 * @param keep_alive_ns    as for vantu_orvanta_connect
 * @param reply_timeout_ns as for vantu_orvanta_connect
 * @retval vantu_orvanta_success                  connected
 * @retval vantu_orvanta_invalid_argument         a null, or a port's text is too long
 * @retval vantu_orvanta_invalid_connection_state already connected
 * @retval vantu_orvanta_timed_out                no answer came in time
 * @retval vantu_orvanta_socket_bind_failed       the local port is taken
 * @retval vantu_orvanta_protocol_parse_failed    the answer is not understood
 * @retval vantu_orvanta_another_client_connected the service serves another client only
 * @retval vantu_orvanta_buffer_full_or_empty     the service has no room for one more
 * @return otherwise a transport code */
VANTU_ORVANTA_NODISCARD VANTU_ORVANTA_API int32_t vantu_orvanta_connect_ports(
    vantu_orvanta_context* context, const char* client_port, const char* service_port, const char* name,
    uint16_t value_a, uint16_t value_b, uint64_t keep_alive_ns, uint64_t reply_timeout_ns);

/** Takes at most one operation from the service and keeps the connection alive. Never waits for traffic;
 * calls no handler. Any thread; calls wait for each other. Polling may go on after any code.
 * @param event zeroed first; its event_type stays 0 when nothing happened; not to be used unless the poll
 *              returns vantu_orvanta_success
 * @retval vantu_orvanta_success                  the event is valid
 * @retval vantu_orvanta_invalid_argument         context or event is null, or the service sent a handedness
 *                                                of 0
 * @retval vantu_orvanta_invalid_connection_state not connected; also every call after the service said
 *                                                goodbye
 * @retval vantu_orvanta_protocol_parse_failed    bytes are not understood; their datagram is dropped, or only
 *                                                the operation if that is unknown
 * @retval vantu_orvanta_no_matching_device       details came of a device that is not listed with that type
 * @retval vantu_orvanta_unexpected_error         memory ran out
 * @return otherwise a transport code */
VANTU_ORVANTA_NODISCARD VANTU_ORVANTA_API int32_t vantu_orvanta_poll(vantu_orvanta_context* context,
                                                                     vantu_orvanta_event* event);

/** Says goodbye to the service if connected, closes the socket and frees the context. Waits up to 100 ms for
 * the service's answer. Stop the polling thread first; nothing may use the context while or after this runs.
 * @param context null is ignored */
VANTU_ORVANTA_API void vantu_orvanta_disconnect(vantu_orvanta_context* context);

/** Sleeps the calling thread on the steady clock, as between two polls.
 * @param duration_ns nanoseconds
 * @retval vantu_orvanta_success always */
VANTU_ORVANTA_API int32_t vantu_orvanta_sleep(uint64_t duration_ns);

#ifdef __cplusplus
}
#endif

#endif
