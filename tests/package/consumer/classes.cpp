// Uses the installed client class: what needs no service, and an exception that crosses the library.
#include "vantu/orvanta/client.hpp"

#include <cstdio>
#include <cstring>

namespace {

int failures = 0;

void check(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "classes: failed: %s\n", what);
        ++failures;
    }
}

} // namespace

int main() {
    namespace orvanta = vantu::orvanta;
    unsigned opened = 0;
    orvanta::client::config callbacks;
    callbacks.on_device_opened = [&](orvanta::client&, unsigned device_id) { opened = device_id; };
    orvanta::client client(callbacks);

    vantu_orvanta_event event{};
    check(!client.dispatch(event), "an empty event is not dispatched");
    event.event_type = vantu_orvanta_event_device_opened;
    event.device_id = 7;
    check(client.dispatch(event) && opened == 7, "an event reaches its callback");
    check(client.config_save(7, {}) == vantu_orvanta_invalid_connection_state,
          "a request before the connection is refused");
    try {
        orvanta::check_result(vantu_orvanta_timed_out, "waiting");
        check(false, "a failed call throws");
    } catch (const orvanta::exception& caught) {
        check(caught.code() == 4 && std::strncmp(caught.what(), "waiting: ", 9) == 0,
              "the exception carries code and label");
    }
    return failures == 0 ? 0 : 1;
}
