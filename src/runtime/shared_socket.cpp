#include "shared_socket.hpp"

#include "vantu/orvanta/common/platform.hpp"

namespace vantu::orvanta {

void shared_socket::attach(socket_handle socket) {
    close();
    socket_ = socket;
    leases_.store(0, std::memory_order_release);
}

void shared_socket::close() {
    constexpr std::int64_t between_looks_ns = 50'000;
    if ((leases_.fetch_or(closed, std::memory_order_acquire) & closed) != 0) {
        return;
    }
    // Not by std::atomic::wait: on Windows libstdc++ 12 can miss the notification and wait for ever.
    while (leases_.load(std::memory_order_acquire) != closed) {
        platform::sleep_until_ns(platform::steady_now_ns() + between_looks_ns);
    }
    close_socket(socket_);
}

} // namespace vantu::orvanta
