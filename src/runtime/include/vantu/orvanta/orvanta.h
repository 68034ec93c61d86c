/** @file
 * The flat API of the Vantu Orvanta client library, whole: the one header that a program includes. */

/** @mainpage The client library of the Orvanta3
 *
 * Plain functions over one context, for C11 and C++17. The class vantu::orvanta::client (client.hpp) puts
 * callbacks on top of them, and vantu::orvanta::session (session.hpp) a connection that looks after itself.
 *
 * A context is one connection to the device service on this machine. Create it, connect it, poll it (by
 * hand, with a wait, or with a polling thread), send requests, and end it with vantu_orvanta_disconnect:
 *
 *     vantu_orvanta_context* context = vantu_orvanta_context_create();
 *     vantu_orvanta_init();
 *     int32_t code = vantu_orvanta_connect(context, "my program", 0, 0, 5000000000, 1000000000);
 *
 * | header | what it has |
 * |---|---|
 * | connection.h | the context: create, connect, poll, disconnect |
 * | wait.h | sleeping until there is a reason to poll |
 * | poll_thread.h | a thread that polls and calls a handler |
 * | requests.h | what is asked of a device; answers come as events |
 * | devices.h | the devices that the service has listed |
 * | communication/records.h | the event, the records of its payload, the device's record |
 * | event_records.h | the record of an event, copied by type |
 * | error_codes.h | the codes by name |
 * | names.h | texts and names of numbers |
 * | log.h | where the library's log lines go |
 * | traffic.h | the datagrams as they go and come |
 * | version.h | the version of headers and library |
 *
 * # Codes
 * Every function that returns int32_t returns an error code of error_codes.h. Arguments are checked first,
 * then the connection, then traffic begins. Where a function says "or a transport code", that is one of
 *
 * - vantu_orvanta_unexpected_error (1): the system refused; a warning was logged,
 * - vantu_orvanta_socket_bind_failed (5): the socket or the service's address cannot be used,
 * - vantu_orvanta_disconnected_from_service (8): the service's port is closed,
 * - vantu_orvanta_os_socket_error (254): the system has no room to send now.
 *
 * # Threads
 * Any function but vantu_orvanta_connect, vantu_orvanta_connect_ports, vantu_orvanta_disconnect and
 * vantu_orvanta_poll_thread_stop may be called from any thread at any time while the context lives. Requests
 * take no lock and never wait on Linux. On Windows a request waits while other threads are inside the
 * system's send call, and for nothing else: one call each. The table readers wait only for one table update.
 *
 * No function throws, but for vantu_orvanta_poll_thread_start and vantu_orvanta_poll_thread_stop, where it is
 * said.
 *
 * # Times
 * Times are nanoseconds of the steady clock. */
#ifndef VANTU_ORVANTA_ORVANTA_H
#define VANTU_ORVANTA_ORVANTA_H

#include "vantu/orvanta/communication/records.h"
#include "vantu/orvanta/connection.h"
#include "vantu/orvanta/devices.h"
#include "vantu/orvanta/error_codes.h"
#include "vantu/orvanta/event_records.h"
#include "vantu/orvanta/export.h"
#include "vantu/orvanta/log.h"
#include "vantu/orvanta/names.h"
#include "vantu/orvanta/poll_thread.h"
#include "vantu/orvanta/requests.h"
#include "vantu/orvanta/traffic.h"
#include "vantu/orvanta/version.h"
#include "vantu/orvanta/wait.h"

#endif
