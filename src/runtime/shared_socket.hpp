// A connection's socket, shared without a lock between senders on any thread and the one thread that
// closes it.
#pragma once

#include "network/socket.hpp"

#include <atomic>
#include <cstdint>

namespace vantu::orvanta {

// Senders take a lease, which is counted while the socket is open and refused afterwards. A close
// refuses new leases, then waits for those under way. A sender thus never uses a descriptor that was
// closed and reused, and no number of refused senders holds up a close.
// attach and close are for one thread at a time: under the context's mutex.
class shared_socket {
  public:
    shared_socket() = default;
    ~shared_socket() { close(); }
    shared_socket(const shared_socket&) = delete;
    shared_socket& operator=(const shared_socket&) = delete;

    [[nodiscard]] bool is_open() const { return (leases_.load(std::memory_order_acquire) & closed) == 0; }

    // For the thread that may close the socket; others take a lease.
    [[nodiscard]] socket_handle get() const { return socket_; }

    // Opens on a socket, which it now owns; closes a socket that it held before.
    void attach(socket_handle socket);

    // Closes the socket after the sends under way have returned. None of them waits for room, so this does
    // not last long; it sleeps meanwhile, so that they get a processor.
    void close();

    // Keeps the socket open while it lives. Costs two atomic operations.
    class lease {
      public:
        explicit lease(shared_socket& owner);
        ~lease();
        lease(const lease&) = delete;
        lease& operator=(const lease&) = delete;

        // The socket to send on, or invalid_socket when there is none.
        [[nodiscard]] socket_handle get() const {
            return owner_ == nullptr ? invalid_socket : owner_->socket_;
        }

      private:
        shared_socket* owner_{nullptr}; // null: refused
    };

  private:
    static constexpr std::uint32_t closed = 0x80000000;

    socket_handle socket_{invalid_socket};      // written while closed and without leases
    std::atomic<std::uint32_t> leases_{closed}; // the number of leases, and the flag
};

inline shared_socket::lease::lease(shared_socket& owner) {
    std::uint32_t seen = owner.leases_.load(std::memory_order_relaxed);
    while ((seen & closed) == 0) {
        if (owner.leases_.compare_exchange_weak(seen, seen + 1, std::memory_order_acquire,
                                                std::memory_order_relaxed)) {
            owner_ = &owner;
            return;
        }
    }
}

inline shared_socket::lease::~lease() {
    if (owner_ != nullptr) {
        owner_->leases_.fetch_sub(1, std::memory_order_release);
    }
}

} // namespace vantu::orvanta
