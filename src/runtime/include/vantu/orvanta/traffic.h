/** @file
 * The datagrams of a connection as they go and come, for a trace or a capture file. */
#ifndef VANTU_ORVANTA_TRAFFIC_H
#define VANTU_ORVANTA_TRAFFIC_H

#include "vantu/orvanta/connection.h"

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Which way a datagram went. */
enum vantu_orvanta_traffic_way {
    vantu_orvanta_traffic_received = 1, /**< it came to the client */
    vantu_orvanta_traffic_sent = 2      /**< the system took it from the client */
};

/** One end of a datagram's way. */
typedef struct vantu_orvanta_traffic_address {
    uint8_t address[16]; /**< as on the wire; an IPv4 address has the first 4 bytes, and zeros follow */
    uint16_t port;       /**< the UDP port */
    uint8_t version;     /**< 4 or 6; 0 where the system does not tell, and then the rest is 0 */
    uint8_t reserved;    /**< 0 */
} vantu_orvanta_traffic_address;

/** One datagram. Later versions of the library add members at the end. */
typedef struct vantu_orvanta_traffic {
    size_t size;        /**< bytes of this record; a member that lies beyond them is not there */
    uint64_t steady_ns; /**< when: nanoseconds of the steady clock, just before it was sent or just after it
                         * was received */
    uint64_t system_ns; /**< the same moment: nanoseconds of the system's clock since 1970-01-01 00:00 UTC */
    const uint8_t* bytes; /**< the datagram's bytes, valid until the sink returns */
    size_t length;        /**< how many bytes are there: all of them, but for a datagram of more than 2048,
                           * which the library drops: its first 2048 */
    size_t whole_length;  /**< length of the whole datagram; 0 for a dropped one whose length the system does
                           * not tell (Windows) */
    uint32_t way;         /**< enum vantu_orvanta_traffic_way */
    vantu_orvanta_traffic_address local; /**< the client's */
    vantu_orvanta_traffic_address peer;  /**< where it was sent to, or the sender of the one that came, which
                                          * need not be the service */
} vantu_orvanta_traffic;

/** Receives each datagram of a context: requests and replies of each connect, failed ones included;
 * keep-alives, requests, the goodbye and its answer; and all that comes, understood or not, before the poll
 * that took it returns. A datagram that the system refuses to send is not told.
 *
 * Runs on the thread whose call sent or received the datagram, before that call returns, and with no lock of
 * the library held. Calls for datagrams of several threads may overlap, and come in another order than the
 * datagrams: see steady_ns. Those for datagrams that came do not overlap as long as one thread polls.
 *
 * It may send requests and read the device table, but not set a sink, connect, poll, or disconnect. A request
 * from it is told by a call within the call. What it throws ends the process.
 * @param user_data as it was given to vantu_orvanta_traffic_sink_set
 * @param told      valid until the sink returns */
typedef void (*vantu_orvanta_traffic_sink)(void* user_data, const vantu_orvanta_traffic* told);

/** Tells a sink of each datagram of a context from here on, in all connections of the context's life. Without
 * one, which is how a context begins, telling costs nothing but a look at one number for each call.
 *
 * Blocks until the calls of the sink before, if there was one, have returned: it is never called again. A
 * connect under way may go on without telling until it returns. Any thread, but not from a sink.
 * @param sink      null for none
 * @param user_data handed to the sink; may be null
 * @retval vantu_orvanta_success          done
 * @retval vantu_orvanta_invalid_argument context is null, or the call comes from a sink */
VANTU_ORVANTA_API int32_t vantu_orvanta_traffic_sink_set(vantu_orvanta_context* context,
                                                         vantu_orvanta_traffic_sink sink, void* user_data);

#ifdef __cplusplus
}
#endif

#endif
