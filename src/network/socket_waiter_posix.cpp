// The wait on Linux: an epoll descriptor over the socket and an eventfd for wakes. Unlike a poll of the
// socket itself it survives that the socket is closed meanwhile, and it is one descriptor for other loops.
#include "network/socket_waiter.hpp"

#include "socket_shared.hpp"
#include "vantu/orvanta/common/log.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"
#include "vantu/orvanta/common/platform.hpp"

#include <atomic>
#include <cerrno>
#include <new>
#include <poll.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace vantu::orvanta {
namespace {

using namespace socket_shared;

void log_refusal(int error) {
    log_here(log_level::warning, failure_text(unable_to_wait, error_text(error)));
}

class owned_descriptor {
  public:
    explicit owned_descriptor(int descriptor) : descriptor_(descriptor) {}
    ~owned_descriptor() {
        if (descriptor_ >= 0) {
            ::close(descriptor_);
        }
    }
    owned_descriptor(const owned_descriptor&) = delete;
    owned_descriptor& operator=(const owned_descriptor&) = delete;
    [[nodiscard]] int get() const { return descriptor_; }

  private:
    int descriptor_;
};

bool add(int set, int descriptor) {
    epoll_event wanted{};
    wanted.events = EPOLLIN;
    return epoll_ctl(set, EPOLL_CTL_ADD, descriptor, &wanted) == 0;
}

} // namespace

struct socket_waiter::implementation {
    owned_descriptor set{epoll_create1(EPOLL_CLOEXEC)};
    owned_descriptor wakes{eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};
    std::atomic<bool> woken{false};
};

std::unique_ptr<socket_waiter> socket_waiter::create() {
    std::unique_ptr<implementation> made(new (std::nothrow) implementation);
    if (made == nullptr) {
        log_refusal(ENOMEM);
        return nullptr;
    }
    if (made->set.get() < 0 || made->wakes.get() < 0 || !add(made->set.get(), made->wakes.get())) {
        log_refusal(errno);
        return nullptr;
    }
    return std::unique_ptr<socket_waiter>(new (std::nothrow) socket_waiter(std::move(made)));
}

socket_waiter::socket_waiter(std::unique_ptr<implementation> made) : self_(std::move(made)) {}
socket_waiter::~socket_waiter() = default;

bool socket_waiter::watch(socket_handle socket) {
    if (add(self_->set.get(), static_cast<int>(socket))) {
        return true;
    }
    log_refusal(errno);
    return false;
}

void socket_waiter::forget(socket_handle socket) {
    // A socket that was never watched is no failure here.
    epoll_ctl(self_->set.get(), EPOLL_CTL_DEL, static_cast<int>(socket), nullptr);
}

void socket_waiter::wake() {
    // The number is there before the flag: a thread that sees the flag finds what to take back.
    eventfd_write(self_->wakes.get(), 1);
    self_->woken.store(true, std::memory_order_release);
}

void socket_waiter::clear_wakes() {
    if (self_->woken.load(std::memory_order_relaxed) &&
        self_->woken.exchange(false, std::memory_order_acquire)) {
        eventfd_t count = 0;
        eventfd_read(self_->wakes.get(), &count);
    }
}

socket_waiter::result socket_waiter::wait_until(std::int64_t deadline_ns) {
    const std::int64_t left = time_left_ns(platform::steady_now_ns(), deadline_ns);
    const timespec limit{static_cast<time_t>(left / ns_per_second), static_cast<long>(left % ns_per_second)};
    pollfd entry{self_->set.get(), POLLIN, 0};
    const int ready = ppoll(&entry, 1, deadline_ns == latest_ns ? nullptr : &limit, nullptr);
    if (ready < 0 && errno != EINTR) {
        log_refusal(errno);
        return result::failed;
    }
    clear_wakes();
    return ready == 0 ? result::timed_out : result::ready;
}

std::intptr_t socket_waiter::handle() const {
    return self_->set.get();
}

} // namespace vantu::orvanta
