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
class session : public visitor {
  public:
    explicit session(surroundings& around) : visitor(around) {
        (void)try_connect();
        const auto device = find_device(orvanta3_type);
        for (const operation& row : device_requests()) {
            const bool is_get = row.body_size == sizeof(proto::device_body);
            if (device && (is_get || row.code == op_code::device_open) && row.code != op_code::config_save &&
                row.code != op_code::device_close) {
                (void)ask(device_request(row.code, 1, device->id, bytes(row.body_size - sizeof device->id)));
            }
        }
        if (const auto grip = find_device(palmetron_type)) {
            (void)ask(device_request(op_code::device_open, 1, grip->id, bytes(2)));
        }
        listen(around.quiet_time_ns);
        (void)ask(device_request(op_code::device_close, 1, unlisted_device));
        (void)ask(datagram_of(op_code::disconnect, 0));
        listen(around.quiet_time_ns / 10);
    }
};

void need_datagrams(const visitor& of) {
    if (of.datagrams() == 0) {
        stop("connect_is_answered", "nothing");
    }
}

} // namespace

void no_damage(surroundings& around, damage kind) {
    const session held(around);
    const auto found = std::find_if(held.damages().begin(), held.damages().end(),
                                    [kind](const found_damage& one) { return one.kind == kind; });
    if (found != held.damages().end()) {
        fail(found->text, expected(kind));
    }
    need_datagrams(held);
}

void datagrams_fit_the_buffer(surroundings& around) {
    const session held(around);
    if (held.refused_datagrams() != 0) {
        fail(formatted("{} datagrams that do not fit into 2048 bytes", held.refused_datagrams()), "none");
    }
    need_datagrams(held);
}

} // namespace vantu::orvanta::conformance::look
