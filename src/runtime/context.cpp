#include "context.hpp"

using namespace vantu::orvanta;

vantu_orvanta_context::~vantu_orvanta_context() {
    delete waiter.load(std::memory_order_relaxed);
}

socket_waiter* vantu_orvanta_context::waiter_under_lock(std::uint32_t& system_error) {
    if (socket_waiter* there = waiter.load(std::memory_order_relaxed); there != nullptr) {
        return there;
    }
    std::unique_ptr<socket_waiter> made = socket_waiter::create(system_error);
    if (made != nullptr && socket.is_open()) {
        system_error = made->watch(socket.get());
    }
    if (system_error != 0) {
        return nullptr;
    }
    waiter.store(made.get(), std::memory_order_release);
    return made.release();
}

void vantu_orvanta_context::close_under_lock() {
    socket_waiter* watching = waiter.load(std::memory_order_relaxed);
    if (watching != nullptr && socket.is_open()) {
        watching->forget(socket.get());
    }
    socket.close();
    if (watching != nullptr) {
        watching->wake();
    }
}
