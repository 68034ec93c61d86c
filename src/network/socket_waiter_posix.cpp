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

class epoll_waiter final : public socket_waiter {
  public:
    [[nodiscard]] bool is_made() {
        return set_.get() >= 0 && wakes_.get() >= 0 && watch(static_cast<socket_handle>(wakes_.get())) == 0;
    }

    [[nodiscard]] std::uint32_t watch(socket_handle socket) override {
        epoll_event wanted{};
        wanted.events = EPOLLIN;
        const int added = epoll_ctl(set_.get(), EPOLL_CTL_ADD, static_cast<int>(socket), &wanted);
        return added == 0 ? 0 : static_cast<std::uint32_t>(errno);
    }

    void forget(socket_handle socket) override {
        epoll_ctl(set_.get(), EPOLL_CTL_DEL, static_cast<int>(socket), nullptr);
    }

    void wake() override {
        // The number is there before the flag: a thread that sees the flag finds what to take back.
        eventfd_write(wakes_.get(), 1);
        woken_.store(true);
    }

    void clear_wakes() override {
        if (woken_.load(std::memory_order_relaxed)) {
            // The flag before the number: a wake between the two leaves the flag set, never the number alone.
            woken_.store(false);
            eventfd_t count = 0;
            eventfd_read(wakes_.get(), &count);
        }
    }

    [[nodiscard]] result wait_until(std::int64_t deadline_ns) override {
        const std::int64_t left = time_left_ns(platform::steady_now_ns(), deadline_ns);
        const timespec limit{static_cast<time_t>(left / ns_per_second),
                             static_cast<long>(left % ns_per_second)};
        pollfd entry{set_.get(), POLLIN, 0};
        const int ready = ppoll(&entry, 1, deadline_ns == latest_ns ? nullptr : &limit, nullptr);
        if (ready == 0) {
            // A wake that comes here is for the next wait.
            return {status::timed_out};
        }
        if (ready < 0 && errno != EINTR) {
            return {status::failed, static_cast<std::uint32_t>(errno)};
        }
        clear_wakes();
        return {status::ready};
    }

    [[nodiscard]] std::intptr_t handle() const override { return set_.get(); }

  private:
    owned_descriptor set_{epoll_create1(EPOLL_CLOEXEC)};
    owned_descriptor wakes_{eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};
    std::atomic<bool> woken_{false};
};

} // namespace

std::unique_ptr<socket_waiter> socket_waiter::create(std::uint32_t& system_error) {
    std::unique_ptr<epoll_waiter> made(new (std::nothrow) epoll_waiter);
    if (made != nullptr && made->is_made()) {
        return made;
    }
    system_error = static_cast<std::uint32_t>(made == nullptr ? ENOMEM : errno);
    return nullptr;
}

void log_wait_failure(std::uint32_t system_error) {
    using namespace socket_shared;
    log_here(log_level::warning, failure_text(unable_to_wait, error_text(system_error)));
}

} // namespace vantu::orvanta
