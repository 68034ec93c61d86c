// Outcomes of a replay: what a client comes to by the datagrams of a capture.
#pragma once

#include "shared/captured_datagram.hpp"
#include "vantu/orvanta/communication/records.h"

#include <cstdint>
#include <functional>
#include <string>
#include <variant>
#include <vector>

namespace vantu::orvanta::ctl {

// The service has accepted the client.
struct replayed_connection {
    std::uint64_t client_id{0};
    std::vector<std::uint32_t> device_ids; // listed before the acceptance
};

// A datagram, or an operation of one, that the library does not take.
struct replayed_rejection {
    std::int32_t code{0}; // of the connect or the poll
    std::string reason;   // one line
};

using replayed_outcome = std::variant<replayed_connection, vantu_orvanta_event, replayed_rejection>;

struct replayed {
    std::int64_t time_ns{0}; // since the first datagram of the capture
    socket_place client;
    replayed_outcome outcome;
};

struct replay_counts {
    std::uint64_t datagrams{0}; // that came to a client
    std::uint64_t events{0};
    std::uint64_t rejected{0};
    std::uint64_t discarded{0}; // events that came after a client's goodbye, of which no program hears
    std::uint64_t others{0};    // datagrams between others than clients and services
};

using replay_listener = std::function<void(const replayed& one)>;

} // namespace vantu::orvanta::ctl
