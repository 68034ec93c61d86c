/* A connection that prints the states of the first Orvanta3, which all loops have in common. The loops call
 * states_poll whenever the handle or the timer says so; the rest is up to them. */
#ifndef STATES_H
#define STATES_H

#include <stdbool.h>
#include <stdint.h>
#include <vantu/orvanta/orvanta.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct states {
    vantu_orvanta_context* context;
    uint32_t device_id; /* 0: none opened yet */
    long left;          /* states still to be printed */
    int32_t code;       /* of the poll that ended it */
} states;

/* Connects to the service on the port in argv[1], to print as many states as argv[2] says. False, after a
 * message, when that fails. */
bool states_begin(states* printed, int argc, char** argv);

/* Polls until an event is empty: after that, and not earlier, the handle tells of what comes next. Call it
 * once before the first wait as well. False when the loop is to end. */
bool states_poll(states* printed);

/* Says goodbye. The status for main: 0 when all states were printed. */
int states_end(states* printed);

#ifdef __cplusplus
}
#endif

#endif
