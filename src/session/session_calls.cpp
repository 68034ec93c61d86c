// The requests that wait: entered by any thread, and ended exactly once on the session's.
#include "session_implementation.hpp"
#include "vantu/orvanta/common/platform.hpp"
#include "vantu/orvanta/orvanta.h"

#include <algorithm>
#include <chrono>

namespace vantu::orvanta {

session::implementation::entered session::implementation::enter(std::shared_ptr<waiting_call> call) {
    {
        const std::lock_guard lock(mutex_);
        if (client_ != nullptr && !stopping_) {
            const std::uint64_t number = ++last_number_;
            calls_.emplace(number, std::move(call));
            return {number, client_};
        }
        failure why = failure_of(vantu_orvanta_disconnected_from_service, call->what);
        posted_.push_back({std::move(call), std::move(why)});
    }
    wake();
    return {0, nullptr};
}

bool session::implementation::take(std::uint64_t number) {
    const std::lock_guard lock(mutex_);
    return calls_.erase(number) != 0;
}

void session::implementation::fail_later(std::uint64_t number, failure why) {
    {
        const std::lock_guard lock(mutex_);
        const auto found = calls_.find(number);
        if (found == calls_.end()) {
            return; // lost meanwhile, and told so
        }
        posted_.push_back({std::move(found->second), std::move(why)});
        calls_.erase(found);
    }
    wake();
}

void session::implementation::consider(std::int64_t deadline_ns) {
    // Changes nothing, but stands in one order with the thread's last look before it sleeps.
    if (deadline_ns < sleeps_until_ns_.fetch_add(0, std::memory_order_acq_rel)) {
        wake();
    }
}

void session::implementation::fail_entered(const char* how) {
    std::map<std::uint64_t, std::shared_ptr<waiting_call>> ended;
    {
        const std::lock_guard lock(mutex_);
        ended.swap(calls_);
    }
    for (const auto& [number, call] : ended) {
        call->fail(owner_, loss_failure(call->what, how));
    }
}

void session::implementation::fail_posted() {
    std::vector<later> ended;
    {
        const std::lock_guard lock(mutex_);
        ended.swap(posted_);
    }
    for (const later& one : ended) {
        one.call->fail(owner_, one.why);
    }
}

bool session::implementation::has_posted() const {
    const std::lock_guard lock(mutex_);
    return !posted_.empty();
}

bool session::implementation::is_own_thread() const {
    return thread_id_.load() == std::this_thread::get_id();
}

bool session::implementation::is_connected() const {
    const std::lock_guard lock(mutex_);
    return client_ != nullptr && !stopping_;
}

std::vector<device> session::implementation::devices() const {
    const std::lock_guard lock(mutex_);
    return arrived_;
}

session::statistics session::implementation::count() const {
    const std::lock_guard lock(mutex_);
    return {events_.load(std::memory_order_relaxed), rejected_.load(std::memory_order_relaxed), connections_};
}

std::optional<gravity_compensation> session::implementation::confirmed(std::uint32_t device_id) const {
    const std::lock_guard lock(mutex_);
    const auto found = confirmed_.find(device_id);
    return found == confirmed_.end() ? std::nullopt : std::optional(found->second);
}

result<device> session::implementation::wait_for_device(std::chrono::nanoseconds time,
                                                        const std::function<bool(const device&)>& wanted) {
    constexpr const char* what = "wait_for_device";
    if (is_own_thread()) {
        return called_from_a_callback(what);
    }
    constexpr std::chrono::nanoseconds longest = std::chrono::hours(24 * 365);
    const auto end =
        std::chrono::steady_clock::now() + std::clamp(time, std::chrono::nanoseconds(0), longest);
    const auto is_over = [this] { return client_ == nullptr && !options_.reconnect; };
    for (;;) {
        std::unique_lock lock(mutex_);
        const std::uint64_t seen = arrivals_so_far_;
        const std::vector<device> here = arrived_;
        if (is_over()) {
            return failure_of(vantu_orvanta_disconnected_from_service, what);
        }
        lock.unlock();
        for (const device& one : here) {
            if (wanted ? wanted(one) : one.type == device_type::orvanta3) {
                return one;
            }
        }
        lock.lock();
        if (!changed_.wait_until(lock, end, [&] { return arrivals_so_far_ != seen || is_over(); })) {
            return failure_of(vantu_orvanta_timed_out, what);
        }
    }
}

} // namespace vantu::orvanta
