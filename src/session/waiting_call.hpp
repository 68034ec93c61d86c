// A request of a session that waits: its handler, and the place where a waiting form finds the outcome.
#pragma once

#include "vantu/orvanta/session.hpp"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

namespace vantu::orvanta {

// A request without an outcome. It is ended once, on the session's thread.
struct waiting_call {
    explicit waiting_call(std::string text) : what(std::move(text)) {}
    waiting_call(const waiting_call&) = delete;
    waiting_call& operator=(const waiting_call&) = delete;
    virtual ~waiting_call() = default;
    virtual void fail(session& owner, const failure& why) = 0;

    const std::string what; // the request and its device, for messages
};

template <typename Value> struct call_with_handler final : waiting_call {
    call_with_handler(std::string text, session::handler<Value> wanted)
        : waiting_call(std::move(text)), done(std::move(wanted)) {}

    void fail(session& owner, const failure& why) override { finish(owner, result<Value>(why)); }
    void finish(session& owner, const result<Value>& outcome) const {
        if (done) {
            done(owner, outcome);
        }
    }

    const session::handler<Value> done;
};

// Where a waiting form finds the outcome that its handler was given.
template <typename Value> class outcome_box {
  public:
    void put(const result<Value>& outcome) {
        {
            const std::lock_guard lock(mutex_);
            outcome_ = outcome;
        }
        filled_.notify_one();
    }

    // Empty when there is none in time; one that comes later is not wanted any more.
    [[nodiscard]] std::optional<result<Value>> wait(std::chrono::nanoseconds time) {
        const auto is_filled = [this] { return outcome_.has_value(); };
        std::unique_lock lock(mutex_);
        if (time >= without_limit) {
            filled_.wait(lock, is_filled);
        } else {
            filled_.wait_for(lock, time, is_filled);
        }
        return std::move(outcome_);
    }

  private:
    static constexpr std::chrono::nanoseconds without_limit = std::chrono::hours(24 * 365);

    std::mutex mutex_;
    std::condition_variable filled_;
    std::optional<result<Value>> outcome_;
};

} // namespace vantu::orvanta
