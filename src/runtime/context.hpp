// The context: a connection of the core with what it needs of the system.
#pragma once

#include "core/connection.hpp"
#include "network/socket.hpp"
#include "network/socket_waiter.hpp"
#include "runtime/idle_task.hpp"
#include "shared_socket.hpp"
#include "traffic.hpp"
#include "vantu/orvanta/orvanta.h"

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>

// Written by the handshake before the socket opens and read-only while it is open: service,
// client_address_text, process_id.
// Under the mutex: the connection but for its devices, the opening and closing of the socket, and what the
// waiter watches.
// Under the devices' mutex: the connection's devices.
// Locks are taken in the order mutex, then the devices' mutex.
struct vantu_orvanta_context {
    vantu::orvanta::shared_socket socket;
    vantu::orvanta::traffic_tap traffic; // beside the socket: both are looked at by each call
    vantu::orvanta::endpoint service;
    std::string client_address_text;
    std::uint32_t process_id{0};
    std::atomic<const vantu::orvanta::idle_task*> when_idle{nullptr};

    // On lines of their own: the polling thread works here while others send.
    alignas(64) std::mutex mutex;
    vantu::orvanta::connection connection;
    vantu::orvanta::receive_record receive{connection.receive_buffer()};
    mutable std::mutex devices_mutex;

    // Null until the first wait, wake or handle; then in place for the context's life.
    std::atomic<vantu::orvanta::socket_waiter*> waiter{nullptr};
    // Set under the mutex before a wait sleeps: from there on its wakes are its own, and no poll takes them
    // back.
    std::atomic<bool> is_waiting{false};

    vantu_orvanta_context() = default;
    ~vantu_orvanta_context();
    vantu_orvanta_context(const vantu_orvanta_context&) = delete;
    vantu_orvanta_context& operator=(const vantu_orvanta_context&) = delete;

    // Under the mutex. The waiter, made when there is none yet; null, with the system's error, when that
    // fails.
    [[nodiscard]] vantu::orvanta::socket_waiter* waiter_under_lock(std::uint32_t& system_error);

    // Under the mutex. Closes the socket and ends the waits.
    void close_under_lock();
};
