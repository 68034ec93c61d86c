#include "shared_socket.hpp"

namespace vantu::orvanta {

void shared_socket::attach(socket_handle socket) {
    close();
    socket_ = socket;
    leases_.store(0, std::memory_order_release);
}

void shared_socket::close() {
    std::uint32_t seen = leases_.fetch_or(closed, std::memory_order_acquire);
    if ((seen & closed) != 0) {
        return;
    }
    for (seen |= closed; seen != closed; seen = leases_.load(std::memory_order_acquire)) {
        leases_.wait(seen, std::memory_order_acquire);
    }
    close_socket(socket_);
}

} // namespace vantu::orvanta
