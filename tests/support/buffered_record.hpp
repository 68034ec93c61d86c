// A receive record with a buffer of its own.
#pragma once

#include "network/socket.hpp"

namespace vantu::orvanta {

struct record_buffer {
    byte_buffer storage{constants::mode_read};
};

// The buffer is built before the record that refers to it.
struct buffered_record : record_buffer, receive_record {
    buffered_record() : receive_record(storage) {}
};

} // namespace vantu::orvanta
