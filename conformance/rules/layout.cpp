// Rules of the bytes of a service's datagrams, held against all that a short session brings.
#include "conformance/rules/looks.hpp"
#include "conformance/rules/steps.hpp"
#include "vantu/orvanta/common/format.hpp"

#include <algorithm>

namespace vantu::orvanta::conformance::look {

using namespace communication;

namespace {

std::string expected(damage kind) {
    switch (kind) {
    case damage::header:
        return "magic 0x9EE9, version 1";
    case damage::reserved:
        return "0";
    case damage::not_whole:
        return "a header and whole operations";
    case damage::record_magic:
        return "0xFF";
    case damage::unknown_code:
        return "an operation that goes to clients";
    case damage::body_length:
        return "the body of the operation table";
    }
    return "";
}

// A session with every request, as far as it is answered: nothing that it lacks stops it.
void hold_session(visitor& who) {
    const surroundings& around = who.around();
    (void)who.try_connect();
    const auto device = who.find_device(orvanta3_type);
    for (const operation& row : device_requests()) {
        const bool is_get = row.body_size == sizeof(proto::device_body);
        if (device && (is_get || row.code == op_code::device_open) && row.code != op_code::config_save &&
            row.code != op_code::device_close) {
            (void)who.ask(device_request(row.code, 1, device->id, bytes(row.body_size - sizeof device->id)));
        }
    }
    if (const auto grip = who.find_device(palmetron_type)) {
        (void)who.ask(device_request(op_code::device_open, 1, grip->id, bytes(2)));
    }
    who.listen(around.quiet_time_ns);
    (void)who.ask(device_request(op_code::device_close, 1, unlisted_device));
    (void)who.ask(datagram_of(op_code::disconnect, 0));
    who.listen(around.quiet_time_ns / 10);
}

} // namespace

void no_damage(surroundings& around, damage kind) {
    visitor who(around);
    hold_session(who);
    const auto found = std::find_if(who.damages().begin(), who.damages().end(),
                                    [kind](const found_damage& one) { return one.kind == kind; });
    if (found != who.damages().end()) {
        fail(found->text, expected(kind));
    }
    if (who.datagrams() == 0) {
        stop("connect_is_answered", "nothing");
    }
}

void datagrams_fit_the_buffer(surroundings& around) {
    visitor who(around);
    hold_session(who);
    if (who.refused_datagrams() != 0) {
        fail(formatted("{} datagrams that do not fit into 2048 bytes", who.refused_datagrams()), "none");
    }
    if (who.datagrams() == 0) {
        stop("connect_is_answered", "nothing");
    }
}

} // namespace vantu::orvanta::conformance::look
