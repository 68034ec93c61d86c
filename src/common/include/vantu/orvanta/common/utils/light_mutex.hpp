// A mutex for sections that are hardly ever contended, at half the cost of std::mutex.
#pragma once

#include "vantu/orvanta/common/utils/platform.hpp"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <thread>

namespace vantu::orvanta {

// Works with std::lock_guard and std::unique_lock. One atomic exchange locks, one store unlocks: no
// waiter has to be woken. A thread that finds it locked gives way a few times, then sleeps between
// looks, longer and longer, so that it burns no processor behind a long section; it may thus
// come in up to a millisecond late. Not recursive, not fair.
class light_mutex {
  public:
    light_mutex() = default;
    light_mutex(const light_mutex&) = delete;
    light_mutex& operator=(const light_mutex&) = delete;

    void lock() {
        if (!try_lock()) {
            wait();
        }
    }

    [[nodiscard]] bool try_lock() { return !locked_.exchange(true, std::memory_order_acquire); }

    void unlock() { locked_.store(false, std::memory_order_release); }

  private:
    static constexpr int yields = 64;
    static constexpr std::int64_t first_pause_ns = 20'000;
    static constexpr std::int64_t longest_pause_ns = 1'000'000;

    void wait() {
        std::int64_t pause_ns = first_pause_ns;
        for (int looks = 0; !try_lock(); ++looks) {
            if (looks < yields) {
                std::this_thread::yield();
            } else {
                platform::sleep_until_ns(platform::steady_now_ns() + pause_ns);
                pause_ns = std::min(2 * pause_ns, longest_pause_ns);
            }
        }
    }

    std::atomic<bool> locked_{false};
};

} // namespace vantu::orvanta
