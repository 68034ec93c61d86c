/* The client library beside an event of the program in a loop around WaitForMultipleObjects:
 * usage: windows_loop PORT [STATES]. Ctrl-C ends it. */
#include "states.h"

#include <stdio.h>
#include <windows.h>

static HANDLE wants_to_end;

static BOOL WINAPI handle_control(DWORD type) {
    (void)type;
    return SetEvent(wants_to_end);
}

/* The clock that vantu_orvanta_next_due tells of. */
static uint64_t now_ns(void) {
    LARGE_INTEGER frequency;
    LARGE_INTEGER count;
    QueryPerformanceFrequency(&frequency);
    QueryPerformanceCounter(&count);
    const uint64_t a_second = (uint64_t)frequency.QuadPart;
    const uint64_t ticks = (uint64_t)count.QuadPart;
    return ticks / a_second * 1000000000 + ticks % a_second * 1000000000 / a_second;
}

/* From now to the time of the next keep-alive, rounded up. */
static DWORD milliseconds_left(vantu_orvanta_context* context) {
    uint64_t due_ns = 0;
    vantu_orvanta_next_due(context, &due_ns);
    const uint64_t begin_ns = now_ns();
    return due_ns > begin_ns ? (DWORD)((due_ns - begin_ns + 999999) / 1000000) : 0;
}

int main(int argc, char** argv) {
    states printed;
    if (!states_begin(&printed, argc, argv)) {
        return 1;
    }
    wants_to_end = CreateEventA(NULL, TRUE, FALSE, NULL);
    SetConsoleCtrlHandler(handle_control, TRUE);
    intptr_t handle = 0;
    vantu_orvanta_wait_handle(printed.context, &handle);
    const HANDLE watched[2] = {wants_to_end, (HANDLE)handle};

    bool goes_on = states_poll(&printed);
    while (goes_on) {
        const DWORD ready = WaitForMultipleObjects(2, watched, FALSE, milliseconds_left(printed.context));
        if (ready == WAIT_FAILED) {
            fprintf(stderr, "the wait failed: %lu\n", GetLastError());
            break;
        }
        /* Whether the library's event or the time ended the wait. The event has reset itself: all must be
         * taken now, which states_poll does. */
        goes_on = ready != WAIT_OBJECT_0 && states_poll(&printed);
    }
    return states_end(&printed);
}
