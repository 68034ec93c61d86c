// A simulated service, and a session that writes down what it is told.
#pragma once

#include "vantu/orvanta/session.hpp"
#include "vantu/orvanta/simulator.hpp"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <gtest/gtest.h>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace orvanta_tests {

using namespace std::chrono_literals;

// Longer than anything takes on a machine that is merely slow.
inline constexpr std::chrono::nanoseconds patience = 30s;

class simulated_service {
  public:
    explicit simulated_service(vantu::orvanta::service_simulator::settings settings = quiet())
        : simulator_(std::move(settings)) {
        simulator_.start();
    }

    // One Orvanta3, and states as rarely as can be.
    static vantu::orvanta::service_simulator::settings quiet() {
        vantu::orvanta::service_simulator::settings settings;
        settings.palmetron_count = 0;
        settings.rate_hz = 0;
        settings.seed = 1;
        return settings;
    }

    vantu::orvanta::service_simulator* operator->() { return &simulator_; }

  private:
    vantu::orvanta::service_simulator simulator_;
};

// Everything that a session's callbacks were told, as lines: "arrival 1", "removal 1", "lost timed_out", ...
class diary {
  public:
    [[nodiscard]] vantu::orvanta::session::callbacks callbacks() {
        using vantu::orvanta::session;
        session::callbacks told;
        told.on_arrival = [this](session&, const vantu::orvanta::device& one) {
            write("arrival " + std::to_string(one.id));
        };
        told.on_removal = [this](session&, const vantu::orvanta::device& one) {
            write("removal " + std::to_string(one.id));
        };
        told.on_lost = [this](session&, const session::loss& why) {
            {
                const std::lock_guard lock(mutex_);
                lost_with_ = why.code;
            }
            write("lost");
        };
        told.on_reconnected = [this](session&) { write("reconnected"); };
        return told;
    }

    void write(const std::string& line) {
        {
            const std::lock_guard lock(mutex_);
            lines_.push_back(line);
        }
        changed_.notify_all();
    }

    [[nodiscard]] std::vector<std::string> lines() const {
        const std::lock_guard lock(mutex_);
        return lines_;
    }

    // Waits until a line was written so many times. False when it was not.
    [[nodiscard]] bool has(const std::string& line, std::ptrdiff_t times = 1) {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, patience, [&] { return count(line) >= times; });
    }

    [[nodiscard]] std::ptrdiff_t times(const std::string& line) const {
        const std::lock_guard lock(mutex_);
        return count(line);
    }

    [[nodiscard]] std::optional<vantu::orvanta::error_code> lost_with() const {
        const std::lock_guard lock(mutex_);
        return lost_with_;
    }

  private:
    [[nodiscard]] std::ptrdiff_t count(const std::string& line) const {
        return std::count(lines_.begin(), lines_.end(), line);
    }

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<std::string> lines_;
    std::optional<vantu::orvanta::error_code> lost_with_;
};

// Options for a session with a simulated service.
[[nodiscard]] inline vantu::orvanta::session::options options_for(
    simulated_service& service, vantu::orvanta::session::callbacks told = {}) {
    vantu::orvanta::session::options options;
    options.name = "session test";
    options.callbacks = std::move(told);
    options.connect_timeout = patience;
    options.request_timeout = patience;
    options.service_port = service->port();
    return options;
}

// A condition that comes about, or not within the patience.
template <typename Condition> [[nodiscard]] bool comes_about(Condition condition) {
    const auto end = std::chrono::steady_clock::now() + patience;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        std::this_thread::sleep_for(1ms);
    }
    return true;
}

} // namespace orvanta_tests
