// All that a device tells, taken by the session's thread and read by the main thread. Samples to print wait
// in a queue with a bound: a reader that is too slow costs lines and never makes the session's thread wait.
#pragma once

#include "ctl/watch/curves.hpp"
#include "ctl/watch/observation.hpp"
#include "ctl/watch/statistics.hpp"
#include "ctl/watch/thinning.hpp"

#include <chrono>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace vantu::orvanta::ctl {

// The last values, and the greatest absolute values so far.
struct live_view {
    double seconds{0}; // since the first sample
    sample_statistics::figures samples;
    std::optional<observation> latest; // its news is the last of each kind
    float greatest_position{0};
    float greatest_velocity{0};
    float greatest_current{0};
};

class recording {
  public:
    using time_point = std::chrono::steady_clock::time_point;
    static constexpr std::size_t longest_queue = 4096;
    static constexpr std::size_t curve_columns = 1024;

    // Empty rate: each sample is to be printed.
    explicit recording(std::optional<double> rate_hz) : thinning_(rate_hz) { queue_.reserve(longest_queue); }

    // By the session's thread.
    void add(const cursor_sample& sample);
    void add(const motor_current& currents, time_point received);
    void add(const power_supply& state);
    void add(const orientation& turned);
    // Why nothing more will come; the first reason stays.
    void end(std::string why);

    // By the main thread.
    // Leaves out all that comes from here on, so that rows, curves and counts tell of the same samples.
    void close();
    // All that is to be printed since the last call.
    void take(std::vector<observation>& into);
    // Samples that found the queue full.
    [[nodiscard]] std::uint64_t unprinted() const;
    [[nodiscard]] std::optional<std::string> end_reason() const;
    [[nodiscard]] live_view view(time_point now) const;
    // Channels 0 to 2 are the position, 3 to 5 the velocity.
    [[nodiscard]] std::vector<curve_point> cursor_curve(std::size_t channel) const;
    [[nodiscard]] std::vector<curve_point> current_curve(std::size_t motor) const;

  private:
    [[nodiscard]] double seconds_at(time_point when) const;

    mutable std::mutex mutex_;
    bool is_closed_{false};
    thinning thinning_;
    std::optional<time_point> first_;
    std::vector<observation> queue_;
    std::uint64_t unprinted_{0};
    side_values news_;
    live_view view_;
    side_values known_;
    sample_statistics statistics_;
    curve_store cursor_curves_{2 * axes, curve_columns};
    curve_store current_curves_{motors, curve_columns};
    std::optional<std::string> end_reason_;
};

} // namespace vantu::orvanta::ctl
