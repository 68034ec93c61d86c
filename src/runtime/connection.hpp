// The connection's socket, shared without a lock between senders on any thread and the one thread
// that closes it.
#pragma once

#include "network/socket.hpp"

#include <atomic>
#include <cstdint>

namespace vantu::orvanta {

// Senders take a lease, which counts them; who closes first takes the socket away from new senders,
// then waits for those under way. A sender thus never uses a descriptor that was closed and reused.
// attach and close are called by one thread at a time: under the context's mutex.
class connection {
  public:
    connection() = default;
    ~connection() { close(); }
    connection(const connection&) = delete;
    connection& operator=(const connection&) = delete;

    [[nodiscard]] bool is_open() const { return socket() != invalid_socket; }

    // For the thread that may close the connection; others take a lease.
    [[nodiscard]] socket_handle socket() const { return socket_.load(std::memory_order_acquire); }

    // Opens the connection on a socket, which it now owns; closes a socket that it held before.
    void attach(socket_handle socket);

    // Closes the socket once the sends under way have returned; they never wait, so neither does
    // this for long.
    void close();

    // Keeps the socket open while it lives. Costs two atomic additions.
    class lease {
      public:
        explicit lease(connection& owner) : owner_(owner) {
            owner_.senders_.fetch_add(1);
            socket_ = owner_.socket_.load();
        }
        ~lease() { owner_.senders_.fetch_sub(1, std::memory_order_release); }
        lease(const lease&) = delete;
        lease& operator=(const lease&) = delete;

        // The socket to send on, or invalid_socket when the connection is closed.
        [[nodiscard]] socket_handle socket() const { return socket_; }

      private:
        connection& owner_;
        socket_handle socket_;
    };

  private:
    std::atomic<socket_handle> socket_{invalid_socket};
    std::atomic<std::uint32_t> senders_{0};
};

} // namespace vantu::orvanta
