// A session with a scripted service: the datagrams of both sides, written out by hand.
#pragma once

#include "session_fixture.hpp"
#include "support/service_operations.hpp"
#include "support/service_session.hpp"

#include <utility>

namespace orvanta_tests {

// The connect of a session with the name "session test" and the default options.
[[nodiscard]] inline bytes connect_of_a_session() {
    bytes datagram = connect_request(); // of "test client", with the same keep-alive time
    const bytes name = text_field("session test", 32);
    std::copy(name.begin(), name.end(), datagram.begin() + 27);
    return datagram;
}

// The details of an Orvanta3, right-handed.
[[nodiscard]] inline bytes details_of(std::uint32_t device_id) {
    return op(23, 0, join({u32(device_id), counting(0x30, 8), {1}}));
}

// The acceptance, after the listing of so many devices and their details.
[[nodiscard]] inline bytes acceptance_with(const bytes& operations) {
    return datagram({operations, op(4, 0, u64(0x1122334455667788))});
}

[[nodiscard]] inline vantu::orvanta::session::options options_for(
    const scripted_service& service, vantu::orvanta::session::callbacks told = {}) {
    vantu::orvanta::session::options options;
    options.name = "session test";
    options.callbacks = std::move(told);
    options.connect_timeout = patience;
    options.request_timeout = patience;
    options.probe_interval = 0ns;
    options.service_port = service.port();
    return options;
}

// A service with device 5, which answers what the test's own function does not: it is asked first.
[[nodiscard]] inline scripted_service::responder service_of_device_5(
    std::function<std::vector<bytes>(const bytes& request)> first = {}) {
    return [first = std::move(first)](const bytes& request) -> std::vector<bytes> {
        if (first) {
            if (std::vector<bytes> answers = first(request); !answers.empty()) {
                return answers;
            }
        }
        const std::uint8_t tag = request.at(10);
        switch (request.at(7)) {
        case 3:
            return {acceptance_with(join({device_listed(5, 1), details_of(5)}))};
        case 5:
            return {goodbye_received()};
        case 18:
            return {datagram({op(19, tag, id_5)})};
        case 20:
            return {datagram({op(21, tag, id_5)})};
        default:
            return {};
        }
    };
}

} // namespace orvanta_tests
