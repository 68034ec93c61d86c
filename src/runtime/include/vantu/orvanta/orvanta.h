/* The flat API of the Vantu Orvanta client library: plain functions over one context. C11 and C++20.
 *
 * A context is one connection to the device service on this machine. Create it, connect it, poll it
 * (by hand or with a polling thread), send requests, and end it with vantu_orvanta_disconnect:
 *
 *     vantu_orvanta_context* context = vantu_orvanta_context_create();
 *     vantu_orvanta_init();
 *     int32_t code = vantu_orvanta_connect(context, "my program", 0, 0, 5000000000, 1000000000);
 *
 * Codes. Every function that returns int32_t returns an error code: 0 is success, 2 an argument that
 * cannot be used (null, or device id 0), 3 a context that is not connected (for connect: one that
 * already is). Arguments are checked first, then the connection, then traffic begins.
 * vantu_orvanta_error_message has the text of each code. Codes of the transport, where a function
 * says "or a transport code": 1 the system refused (a warning was logged), 5 the socket or the
 * service's address cannot be used, 8 the service's port is closed, 254 the system has no room to
 * send now.
 *
 * Threads. Any function but connect, disconnect and thread_stop may be called from any thread at any
 * time while the context lives. Requests take no lock and never wait on Linux. On Windows a request
 * waits while other threads are inside the system's send call, and for nothing else: one call each.
 * The table readers wait only for one table update. Times are nanoseconds of the steady clock.
 *
 * No function throws, but for vantu_orvanta_poll_thread_start and _stop, where it is said. */
#ifndef VANTU_ORVANTA_ORVANTA_H
#define VANTU_ORVANTA_ORVANTA_H

#include "vantu/orvanta/communication/records.h"
#include "vantu/orvanta/error_codes.h"
#include "vantu/orvanta/export.h"
#include "vantu/orvanta/wait.h"

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* One connection; opaque. */
typedef struct vantu_orvanta_context vantu_orvanta_context;

/* A running polling thread; opaque. */
typedef struct vantu_orvanta_poll_thread vantu_orvanta_poll_thread;

/* Receives each event that a polling thread takes, on that thread, with no lock of the library held.
 * The event is valid until the handler returns. The handler may call any function of this library
 * but vantu_orvanta_poll_thread_stop for its own thread and vantu_orvanta_disconnect. */
typedef void (*vantu_orvanta_event_handler)(void* user, const vantu_orvanta_event* event);

/* The text of an error code. A constant that is never null and never freed; "unknown" for a code
 * without a text of its own, "nil" for 0. Never blocks, any thread. */
VANTU_ORVANTA_API const char* vantu_orvanta_error_message(int32_t code);

/* Log levels; debug and info go to standard output, warning and error to standard error. */
enum vantu_orvanta_log_level {
    vantu_orvanta_log_debug = 0,
    vantu_orvanta_log_info = 1,
    vantu_orvanta_log_warning = 2,
    vantu_orvanta_log_error = 3
};

/* Receives the library's log lines in place of the standard streams: an opaque value (0), the level,
 * the source path and line of the call, and the message; the texts are valid until it returns. Runs
 * on the thread that logs, one call at a time, under the logger's lock: it must not log. */
typedef void (*vantu_orvanta_log_sink)(uint64_t opaque, uint32_t level, const char* path, uint64_t line,
                                       const char* message);

/* Sends the log lines of the whole process to a sink; null brings the standard streams back. Returns
 * 0. Waits for a log call in progress. Any thread, but not from a sink. */
VANTU_ORVANTA_API int32_t vantu_orvanta_log_sink_set(vantu_orvanta_log_sink sink);

/* Starts the platform's socket layer. Call it once, before the first connect. Returns 0; a platform
 * without sockets ends the process. */
VANTU_ORVANTA_API int32_t vantu_orvanta_init(void);

/* A new context, not connected; null when memory runs out. vantu_orvanta_disconnect frees it. */
VANTU_ORVANTA_API vantu_orvanta_context* vantu_orvanta_context_create(void);

/* Connects to the service on its own port (54320), from the first of the local ports 54321 to 54336
 * on which that works. Blocks for up to 16 reply time-outs; logs a line for each port it tries.
 *
 * name               at most 31 characters; a longer one ends the process
 * value_a, value_b   handed to the service as they are; 0 and 0 will do
 * keep_alive_ns      how long the service may wait for a sign of life before it forgets the client;
 *                    the poll sends one every second
 * reply_timeout_ns   how long to wait on each port, in whole milliseconds; 0 waits without limit,
 *                    less than a millisecond looks once
 *
 * Returns 0; 2 for a null; 3 when already connected; 5 when no port gave a connection, which is also
 * what an absent service gives; 6 when the answer cannot be understood; 178 when the service serves
 * another client only; 9 when it has no room; or a transport code. A failed call leaves the context
 * as it was. Call it from one thread while no other uses the context. */
VANTU_ORVANTA_API int32_t vantu_orvanta_connect(vantu_orvanta_context* context, const char* name,
                                                uint16_t value_a, uint16_t value_b, uint64_t keep_alive_ns,
                                                uint64_t reply_timeout_ns);

/* One attempt to connect from one local port to one service port, both decimal texts of at most 256
 * characters; client_port "0" lets the system choose. Otherwise as vantu_orvanta_connect: returns 4
 * when no answer came in time and 5 when the local port is taken. */
VANTU_ORVANTA_API int32_t vantu_orvanta_connect_ports(vantu_orvanta_context* context, const char* client_port,
                                                      const char* service_port, const char* name,
                                                      uint16_t value_a, uint16_t value_b,
                                                      uint64_t keep_alive_ns, uint64_t reply_timeout_ns);

/* Takes at most one operation from the service and keeps the connection alive. Never waits for
 * traffic; calls no handler. The event is zeroed first; event_type stays 0 when nothing happened. It
 * must not be used unless 0 is returned.
 *
 * Returns 0; 2 for a null; 3 when not connected, also on every call after the service said goodbye;
 * 6 for bytes that are not understood, whose datagram is dropped (of an unknown operation only that
 * operation); 2 for a handedness of 0 from the service; 7 for details of a device that is not
 * listed with that type; 1 when memory runs out; or a transport code. Polling may go on after any
 * code. Any thread; calls wait for each other. */
VANTU_ORVANTA_API int32_t vantu_orvanta_poll(vantu_orvanta_context* context, vantu_orvanta_event* event);

/* Starts a thread that polls the context every 100 microseconds while nothing happens and back to
 * back while something does, and hands each event to the handler. It takes no signals. It ends by
 * itself on the first poll that returns anything but 0: see vantu_orvanta_poll_thread_result.
 *
 * Returns the thread, to be freed with vantu_orvanta_poll_thread_stop before the context is; null
 * for a null context or handler and when memory runs out. Throws std::system_error
 * (resource_unavailable_try_again) when the system starts no thread. */
VANTU_ORVANTA_API vantu_orvanta_poll_thread* vantu_orvanta_poll_thread_start(
    vantu_orvanta_context* context, vantu_orvanta_event_handler handler, void* user);

/* The code that ended a polling thread; 0 while it runs and for a null. Any thread, until
 * vantu_orvanta_poll_thread_stop. */
VANTU_ORVANTA_API uint32_t vantu_orvanta_poll_thread_result(const vantu_orvanta_poll_thread* thread);

/* Stops a polling thread, waits for its end (a handler that is running is waited for) and frees it.
 * Null is ignored. Throws std::system_error: resource_deadlock_would_occur when called from that
 * very thread, which then ends once its handler returns and is still to be stopped from another
 * thread; no_such_process when the thread cannot be joined; std::bad_alloc in place of either when there
 * is no memory for it. */
VANTU_ORVANTA_API void vantu_orvanta_poll_thread_stop(vantu_orvanta_poll_thread* thread);

/* Says goodbye to the service if connected, waits up to 100 ms for its answer, closes the socket and
 * frees the context. Null is ignored. Stop the polling thread first; nothing may use the context
 * while or after this runs. */
VANTU_ORVANTA_API void vantu_orvanta_disconnect(vantu_orvanta_context* context);

/* The ids of the devices that the service has listed, in the order of their announcement, from the library's
 * own table: no traffic. count: in, the room in ids; out, the number written. Returns 0; 2 for a null; 3 when
 * not connected; 9 when there are more devices than room: the array is full and usable. */
VANTU_ORVANTA_API int32_t vantu_orvanta_device_ids(vantu_orvanta_context* context, uint32_t* ids,
                                                   size_t* count);

/* Copies what the library keeps of one device: its listing, details and latest state, as the poll
 * last took them. No traffic.
 * Returns 0; 2 for a null or id 0; 3 when not connected; 7 when no such device is listed. */
VANTU_ORVANTA_API int32_t vantu_orvanta_device_info(vantu_orvanta_context* context, uint32_t device_id,
                                                    vantu_orvanta_device* device);

/* Requests. Each sends one datagram and does not wait for its answer, which comes later as an
 * event that carries the request's tag, or as an error event with the same tag. Tag 0 means that
 * nobody waits for this answer in particular. Each returns 0 once the datagram is sent; 2 for a null
 * or device id 0; 3 when not connected; or a transport code. A datagram that goes out puts the next
 * keep-alive off by a second. */

/* Opens a device, so that its states are sent and its configuration can be changed. value is handed
 * to the service as it is; 0 will do. Answer: event 18. */
VANTU_ORVANTA_API int32_t vantu_orvanta_device_open(vantu_orvanta_context* context, uint32_t device_id,
                                                    uint8_t tag, uint16_t value);

/* Closes a device. Answer: event 19. */
VANTU_ORVANTA_API int32_t vantu_orvanta_device_close(vantu_orvanta_context* context, uint32_t device_id,
                                                     uint8_t tag);

/* Asks for the orientation. Answer: event 51, vantu_orvanta_orientation. */
VANTU_ORVANTA_API int32_t vantu_orvanta_orientation_get(vantu_orvanta_context* context, uint32_t device_id,
                                                        uint8_t tag);

/* Saves the configuration on the device. Answer: event 64, vantu_orvanta_config_save. */
VANTU_ORVANTA_API int32_t vantu_orvanta_config_save_request(vantu_orvanta_context* context,
                                                            uint32_t device_id, uint8_t tag);

/* Asks for the gravity compensation. Answer: event 65,
 * vantu_orvanta_config_gravity_compensation. */
VANTU_ORVANTA_API int32_t vantu_orvanta_config_gravity_compensation_get(vantu_orvanta_context* context,
                                                                        uint32_t device_id, uint8_t tag);

/* Sets the gravity compensation; the values are not range-checked here. Answer: event 65, with the
 * values now in force. */
VANTU_ORVANTA_API int32_t
vantu_orvanta_config_gravity_compensation_set(vantu_orvanta_context* context, uint32_t device_id, uint8_t tag,
                                              const vantu_orvanta_config_gravity_compensation* value);

/* Asks for the torque scaling. Answer: event 66, vantu_orvanta_config_torque_scaling. */
VANTU_ORVANTA_API int32_t vantu_orvanta_config_torque_scaling_get(vantu_orvanta_context* context,
                                                                  uint32_t device_id, uint8_t tag);

/* Sets the torque scaling. Answer: event 66, with the value now in force. */
VANTU_ORVANTA_API int32_t
vantu_orvanta_config_torque_scaling_set(vantu_orvanta_context* context, uint32_t device_id, uint8_t tag,
                                        const vantu_orvanta_config_torque_scaling* value);

/* Sets the handedness: 1 right, 2 left; returns 2 for 0. Answer: event 67,
 * vantu_orvanta_config_handedness. */
VANTU_ORVANTA_API int32_t vantu_orvanta_config_handedness_set(vantu_orvanta_context* context,
                                                              uint32_t device_id, uint8_t tag,
                                                              const uint8_t* handedness);

/* Sleeps the calling thread for a duration in nanoseconds of the steady clock. Returns 0. */
VANTU_ORVANTA_API int32_t vantu_orvanta_sleep(uint64_t duration_ns);

#ifdef __cplusplus
}
#endif

#endif
