// The library's socket layer in tests that use it themselves.
#pragma once

#include "network/socket.hpp"

namespace orvanta_tests {

// At namespace scope it starts the sockets of a program before all tests, where the client library does not.
struct started_sockets {
    started_sockets() { vantu::orvanta::socket_startup(); }
};

struct record_buffer {
    vantu::orvanta::byte_buffer storage{vantu::orvanta::constants::mode_read};
};

// A receive record with a buffer of its own, which is built before the record that refers to it.
struct buffered_record : record_buffer, vantu::orvanta::receive_record {
    buffered_record() : receive_record(storage) {}
};

} // namespace orvanta_tests
