// The context: all that the library keeps of one connection.
#pragma once

#include "network/socket.hpp"
#include "runtime/connection.hpp"
#include "runtime/device_table.hpp"
#include "vantu/orvanta/common/utils/light_mutex.hpp"
#include "vantu/orvanta/orvanta.h"

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>

// Written by the handshake before the connection opens and read-only while it is open: service,
// client_address_text, client_id, process_id.
// Under the mutex: receive, and the opening and closing of the connection.
// Locks are taken in the order mutex, then the device table's own.
struct vantu_orvanta_context {
    vantu::orvanta::connection connection;
    std::atomic<std::int64_t> last_send_ns{0};
    vantu::orvanta::endpoint service;
    std::string client_address_text;
    std::uint64_t client_id{0};
    std::uint32_t process_id{0};

    // On lines of their own: the polling thread works here while others send.
    alignas(64) vantu::orvanta::light_mutex mutex;
    vantu::orvanta::receive_record receive;
    vantu::orvanta::device_table devices;
};
