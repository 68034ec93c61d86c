// A wait for one socket's next datagram that other threads can end, and its handle for event loops.
#pragma once

#include "network/socket.hpp"

#include <cstdint>
#include <memory>

namespace vantu::orvanta {

// watch and forget are for one thread at a time; everything else is for any thread. The handle is the same
// for the object's life, whatever sockets it watches on the way.
class socket_waiter {
  public:
    // Null, after a warning, when the system has no handle left or memory runs out.
    [[nodiscard]] static std::unique_ptr<socket_waiter> create();
    ~socket_waiter();
    socket_waiter(const socket_waiter&) = delete;
    socket_waiter& operator=(const socket_waiter&) = delete;

    // Watches an open socket from here on. False, after a warning, when the system refuses.
    [[nodiscard]] bool watch(socket_handle socket);

    // Ends that: to be called before the socket is closed.
    void forget(socket_handle socket);

    // Ends the wait under way, or else the next one.
    void wake();

    // Takes back wakes that have ended no wait. Costs one atomic load when there are none.
    void clear_wakes();

    enum class result : std::uint8_t {
        ready,     // a datagram, an error of the socket, a wake; or a signal that the thread handled
        timed_out, // the deadline was reached
        failed,    // the system refused; a warning was logged
    };

    // Sleeps until something is ready or the steady clock reaches the deadline. Takes the wakes that end it
    // back.
    [[nodiscard]] result wait_until(std::int64_t deadline_ns);

    // On Linux a file descriptor that is readable while something is ready. On Windows an event that is set
    // when something becomes ready, and that a wait resets.
    [[nodiscard]] std::intptr_t handle() const;

  private:
    struct implementation;
    explicit socket_waiter(std::unique_ptr<implementation> made);

    std::unique_ptr<implementation> self_;
};

} // namespace vantu::orvanta
