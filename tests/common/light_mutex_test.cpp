// The light mutex: exclusion, waiting, and no busy processor behind a long section.
#include "vantu/orvanta/common/utils/light_mutex.hpp"

#include <atomic>
#include <chrono>
#include <ctime>
#include <gtest/gtest.h>
#include <mutex>
#include <thread>
#include <vector>

namespace {

using vantu::orvanta::light_mutex;

double thread_cpu_seconds() {
    timespec used{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
    return static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) * 1e-9;
}

TEST(light_mutex, lets_one_thread_in_at_a_time) {
    light_mutex mutex;
    int count = 0;
    constexpr int threads = 4;
    constexpr int rounds = 20'000;
    std::vector<std::thread> counting;
    for (int i = 0; i < threads; ++i) {
        counting.emplace_back([&] {
            for (int round = 0; round < rounds; ++round) {
                const std::lock_guard lock(mutex);
                ++count;
            }
        });
    }
    for (std::thread& one : counting) {
        one.join();
    }
    EXPECT_EQ(count, threads * rounds);
}

TEST(light_mutex, is_not_had_twice) {
    light_mutex mutex;
    ASSERT_TRUE(mutex.try_lock());
    EXPECT_FALSE(mutex.try_lock());
    mutex.unlock();
    EXPECT_TRUE(mutex.try_lock());
    mutex.unlock();
}

TEST(light_mutex, lets_a_waiter_in_once_it_is_unlocked_and_not_before) {
    light_mutex mutex;
    std::atomic<bool> waiting{false};
    std::atomic<bool> unlocked{false};
    std::atomic<bool> came_in_time{false};
    mutex.lock();
    std::thread waiter([&] {
        waiting = true;
        const std::lock_guard lock(mutex);
        came_in_time = unlocked.load();
    });
    while (!waiting) {
        std::this_thread::yield();
    }
    unlocked = true;
    mutex.unlock();
    waiter.join();
    EXPECT_TRUE(came_in_time);
}

TEST(light_mutex, sleeps_behind_a_long_section) {
    light_mutex mutex;
    std::atomic<bool> waiting{false};
    double used_seconds = 0;
    mutex.lock();
    std::thread waiter([&] {
        waiting = true;
        const double before = thread_cpu_seconds();
        const std::lock_guard lock(mutex);
        used_seconds = thread_cpu_seconds() - before;
    });
    while (!waiting) {
        std::this_thread::yield();
    }
    constexpr double section_seconds = 0.5;
    std::this_thread::sleep_for(std::chrono::duration<double>(section_seconds));
    mutex.unlock();
    waiter.join();
    // A waiter that spun would have used nearly all of it.
    EXPECT_LT(used_seconds, 0.25 * section_seconds);
}

} // namespace
