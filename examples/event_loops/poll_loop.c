/* The client library beside standard input in a loop around poll(2): usage: poll_loop PORT [STATES]. A line
 * that begins with q ends it. */
#include "states.h"

#include <errno.h>
#include <poll.h>
#include <stdio.h>
#include <time.h>
#include <unistd.h>

/* From now to the time of the next keep-alive, rounded up to what poll(2) counts in. */
static int milliseconds_left(vantu_orvanta_context* context) {
    uint64_t due_ns = 0;
    struct timespec now;
    vantu_orvanta_next_due(context, &due_ns);
    clock_gettime(CLOCK_MONOTONIC, &now);
    const uint64_t now_ns = (uint64_t)now.tv_sec * 1000000000 + (uint64_t)now.tv_nsec;
    return due_ns > now_ns ? (int)((due_ns - now_ns + 999999) / 1000000) : 0;
}

/* False when the user wants to end. */
static bool read_input(struct pollfd* input) {
    char line[256];
    const ssize_t length = read(input->fd, line, sizeof(line));
    if (length == 0) {
        input->fd = -1; /* closed: poll(2) passes it over */
    }
    return length <= 0 || line[0] != 'q';
}

int main(int argc, char** argv) {
    states printed;
    if (!states_begin(&printed, argc, argv)) {
        return 1;
    }
    intptr_t handle = -1;
    vantu_orvanta_wait_handle(printed.context, &handle);
    struct pollfd watched[2] = {{(int)handle, POLLIN, 0}, {STDIN_FILENO, POLLIN, 0}};

    bool goes_on = states_poll(&printed);
    while (goes_on) {
        const int ready = poll(watched, 2, milliseconds_left(printed.context));
        if (ready < 0 && errno != EINTR) {
            perror("poll");
            break;
        }
        if (ready > 0 && watched[1].revents != 0 && !read_input(&watched[1])) {
            break;
        }
        /* Whether the handle, the time or a signal ended the wait: a poll too many does no harm. */
        goes_on = states_poll(&printed);
    }
    return states_end(&printed);
}
