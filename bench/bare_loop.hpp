// The bare counterpart of the polling thread: one receive and one absolute sleep a tick, with the
// same timer slack.
#pragma once

#include "bench_service.hpp"

#include <atomic>
#include <ctime>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace vantu::orvanta::bench {

class bare_loop {
  public:
    // Calls received(bytes, length) for each datagram on the socket.
    template <typename Received>
    bare_loop(const bare_socket& socket, Received received)
        : thread_([this, &socket, received] { run(socket, received); }) {
        while (id_.load() == 0) {
            std::this_thread::yield();
        }
    }

    ~bare_loop() {
        stop_.store(true);
        thread_.join();
    }

    bare_loop(const bare_loop&) = delete;
    bare_loop& operator=(const bare_loop&) = delete;

    [[nodiscard]] pid_t id() const { return id_.load(); }

  private:
    static constexpr std::int64_t tick_ns = 100'000;

    static std::int64_t clock_ns() {
        timespec now{};
        clock_gettime(CLOCK_MONOTONIC, &now);
        return now.tv_sec * std::int64_t{1'000'000'000} + now.tv_nsec;
    }

    template <typename Received> void run(const bare_socket& socket, Received received) {
        prctl(PR_SET_TIMERSLACK, 1UL, 0UL, 0UL, 0UL);
        id_.store(gettid());
        std::int64_t next = clock_ns() + tick_ns;
        std::uint8_t bytes[2048];
        while (!stop_.load()) {
            sockaddr_storage from;
            socklen_t length = sizeof(from);
            const ssize_t count = recvfrom(socket.descriptor(), bytes, sizeof(bytes), 0,
                                           reinterpret_cast<sockaddr*>(&from), &length);
            if (count >= 0) {
                received(bytes, count);
                continue;
            }
            const timespec until{next / 1'000'000'000, next % 1'000'000'000};
            clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &until, nullptr);
            const std::int64_t now = clock_ns();
            while (next < now) {
                next += tick_ns;
            }
        }
    }

    std::atomic<pid_t> id_{0};
    std::atomic<bool> stop_{false};
    std::thread thread_;
};

} // namespace vantu::orvanta::bench
