// A wait for one socket's next datagram that other threads can end, and its handle for event loops.
#pragma once

#include "network/socket.hpp"

#include <cstdint>
#include <memory>

namespace vantu::orvanta {

// watch and forget are for one thread at a time, and so is wait_until; everything else is for any thread. The
// handle is the same for the object's life, whatever sockets it watches on the way. Logs nothing, for callers
// that hold something: a failure is the system's number, to be logged with log_wait_failure.
class socket_waiter {
  public:
    // Null when the system has no handle left or memory runs out; the error says which.
    [[nodiscard]] static std::unique_ptr<socket_waiter> create(std::uint32_t& system_error);
    virtual ~socket_waiter() = default;
    socket_waiter(const socket_waiter&) = delete;
    socket_waiter& operator=(const socket_waiter&) = delete;

    // Watches an open socket from here on, with what waits there already. 0, or the error of the system.
    [[nodiscard]] virtual std::uint32_t watch(socket_handle socket) = 0;

    // Ends that: to be called before the socket is closed.
    virtual void forget(socket_handle socket) = 0;

    // Ends the wait under way, or else the next one.
    virtual void wake() = 0;

    // Takes back the wakes that have ended no wait, while none is under way. Costs an atomic load when there
    // are none.
    virtual void clear_wakes() = 0;

    enum class status : std::uint8_t {
        ready,     // a datagram, an error of the socket, a wake; or a signal that the thread handled
        timed_out, // the deadline was reached
        failed,    // the system refused
    };
    struct result {
        status outcome;
        std::uint32_t system_error{0}; // of a wait that failed
    };

    // Sleeps until something is ready or the steady clock reaches the deadline. Takes back the wakes that
    // end it.
    [[nodiscard]] virtual result wait_until(std::int64_t deadline_ns) = 0;

    // On Linux a file descriptor that is readable while something is ready. On Windows an event that is set
    // when something becomes ready, and that a wait resets.
    [[nodiscard]] virtual std::intptr_t handle() const = 0;

  protected:
    socket_waiter() = default;
};

// Logs the failure of a waiter.
void log_wait_failure(std::uint32_t system_error);

} // namespace vantu::orvanta
