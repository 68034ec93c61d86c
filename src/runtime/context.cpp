#include "context.hpp"

using namespace vantu::orvanta;

vantu_orvanta_context::~vantu_orvanta_context() {
    delete waiter.load(std::memory_order_relaxed);
}

socket_waiter* vantu_orvanta_context::waiter_under_lock() {
    if (socket_waiter* made = waiter.load(std::memory_order_relaxed); made != nullptr) {
        return made;
    }
    std::unique_ptr<socket_waiter> made = socket_waiter::create();
    if (made == nullptr || (socket.is_open() && !made->watch(socket.get()))) {
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
