#include "states.h"

#include <stdio.h>
#include <stdlib.h>

static const uint64_t keep_alive_ns = 3000000000; /* the service forgets a client that is silent so long */
static const uint64_t reply_timeout_ns = 5000000000;

static void open_first_device(states* printed) {
    uint32_t ids[64];
    size_t count = 64;
    const int32_t code = vantu_orvanta_device_ids(printed->context, ids, &count);
    if (code != vantu_orvanta_success && code != vantu_orvanta_buffer_full_or_empty) {
        return;
    }
    for (size_t i = 0; i < count && printed->device_id == 0; ++i) {
        vantu_orvanta_device device;
        if (vantu_orvanta_device_info(printed->context, ids[i], &device) == vantu_orvanta_success &&
            device.device_type == vantu_orvanta_device_type_orvanta3 &&
            vantu_orvanta_device_open(printed->context, ids[i], 0, 0) == vantu_orvanta_success) {
            printed->device_id = ids[i];
        }
    }
}

static void print_state(states* printed, const vantu_orvanta_cursor_state* state) {
    printf("state");
    for (size_t i = 0; i < 6; ++i) {
        printf(" %.3f", state->values[i]);
    }
    printf("\n");
    fflush(stdout);
    --printed->left;
}

bool states_begin(states* printed, int argc, char** argv) {
    *printed = (states){NULL, 0, argc > 2 ? strtol(argv[2], NULL, 10) : 10, vantu_orvanta_success};
    if (argc < 2) {
        fprintf(stderr, "usage: %s PORT [STATES]\n", argv[0]);
        return false;
    }
    vantu_orvanta_init();
    printed->context = vantu_orvanta_context_create();
    printed->code = vantu_orvanta_connect_ports(printed->context, "0", argv[1], "event loop", 0, 0,
                                                keep_alive_ns, reply_timeout_ns);
    if (printed->code != vantu_orvanta_success) {
        fprintf(stderr, "no connection: %s\n", vantu_orvanta_error_message(printed->code));
        vantu_orvanta_disconnect(printed->context);
        return false;
    }
    return true;
}

bool states_poll(states* printed) {
    vantu_orvanta_event event;
    do {
        printed->code = vantu_orvanta_poll(printed->context, &event);
        if (printed->code != vantu_orvanta_success) {
            return false;
        }
        vantu_orvanta_cursor_state state;
        if (vantu_orvanta_event_get_cursor_state(&event, &state) == vantu_orvanta_success) {
            print_state(printed, &state);
        }
    } while (printed->left > 0 && event.event_type != vantu_orvanta_event_none);
    if (printed->device_id == 0) {
        open_first_device(printed);
    }
    return printed->left > 0;
}

int states_end(states* printed) {
    if (printed->code != vantu_orvanta_success) {
        fprintf(stderr, "the connection is over: %s\n", vantu_orvanta_error_message(printed->code));
    }
    vantu_orvanta_disconnect(printed->context);
    return printed->left > 0 ? 1 : 0;
}
