/* Uses the installed flat API from C: what needs no service. */
#include "vantu/orvanta/orvanta.h"

#include <stdio.h>
#include <string.h>

static int failures = 0;

static void check(int holds, const char* what) {
    if (!holds) {
        fprintf(stderr, "flat: failed: %s\n", what);
        ++failures;
    }
}

int main(void) {
    vantu_orvanta_event event;
    vantu_orvanta_context* context = vantu_orvanta_context_create();
    check(context != NULL, "a context is created");
    check(vantu_orvanta_init() == vantu_orvanta_success, "the socket layer starts");
    check(vantu_orvanta_poll(context, &event) == vantu_orvanta_invalid_connection_state,
          "a poll before the connection is refused");
    check(vantu_orvanta_device_open(context, 0, 0, 0) == vantu_orvanta_invalid_argument,
          "device id 0 is refused");
    check(strcmp(vantu_orvanta_error_message(vantu_orvanta_another_client_connected),
                 "another client is already connected") == 0,
          "a code has its text");
    check(strcmp(vantu_orvanta_version(), VANTU_ORVANTA_VERSION) == 0,
          "library and headers are of one version");
    vantu_orvanta_disconnect(context);
    return failures == 0 ? 0 : 1;
}
