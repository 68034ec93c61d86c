/* The client library in a loop around epoll(7), with a timerfd for its keep-alives and a signalfd for Ctrl-C:
 * usage: epoll_loop PORT [STATES]. */
#include "states.h"

#include <errno.h>
#include <signal.h>
#include <stdio.h>
#include <sys/epoll.h>
#include <sys/signalfd.h>
#include <sys/timerfd.h>
#include <unistd.h>

static void watch(int set, int descriptor) {
    struct epoll_event wanted = {.events = EPOLLIN, .data = {.fd = descriptor}};
    epoll_ctl(set, EPOLL_CTL_ADD, descriptor, &wanted);
}

/* The timer runs at the absolute time that the library tells, on the clock that it tells it of. A time of 0
 * would stop a timer: 1 runs at once. */
static void set_timer(int timer, vantu_orvanta_context* context) {
    uint64_t due_ns = 0;
    vantu_orvanta_next_due(context, &due_ns);
    due_ns = due_ns == 0 ? 1 : due_ns;
    const struct itimerspec due = {{0, 0}, {(time_t)(due_ns / 1000000000), (long)(due_ns % 1000000000)}};
    timerfd_settime(timer, TFD_TIMER_ABSTIME, &due, NULL);
}

int main(int argc, char** argv) {
    states printed;
    if (!states_begin(&printed, argc, argv)) {
        return 1;
    }
    sigset_t ending;
    sigemptyset(&ending);
    sigaddset(&ending, SIGINT);
    sigaddset(&ending, SIGTERM);
    sigprocmask(SIG_BLOCK, &ending, NULL);

    intptr_t handle = -1;
    vantu_orvanta_wait_handle(printed.context, &handle);
    const int set = epoll_create1(EPOLL_CLOEXEC);
    const int timer = timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC);
    const int signals = signalfd(-1, &ending, SFD_CLOEXEC);
    watch(set, (int)handle);
    watch(set, timer);
    watch(set, signals);

    bool goes_on = states_poll(&printed);
    while (goes_on) {
        set_timer(timer, printed.context); /* which also takes back that it has run */
        struct epoll_event ready = {0};
        if (epoll_wait(set, &ready, 1, -1) < 0 && errno != EINTR) {
            perror("epoll_wait");
            break;
        }
        goes_on = ready.data.fd != signals && states_poll(&printed);
    }
    close(signals);
    close(timer);
    close(set);
    return states_end(&printed);
}
