#include "ctl/watch/recording.hpp"

#include <algorithm>
#include <cmath>
#include <span>
#include <utility>

namespace vantu::orvanta::ctl {
namespace {

float greatest_of(float so_far, std::span<const float> values) {
    for (const float amount : values) {
        so_far = std::isfinite(amount) ? std::max(so_far, std::abs(amount)) : so_far;
    }
    return so_far;
}

} // namespace

double recording::seconds_at(time_point when) const {
    return first_ ? std::max(std::chrono::duration<double>(when - *first_).count(), 0.0) : 0;
}

void recording::add(const cursor_sample& sample) {
    const std::span all(sample.values);
    const std::lock_guard lock(mutex_);
    if (is_closed_) {
        return;
    }
    first_ = first_.value_or(sample.received);
    observation one;
    one.seconds = seconds_at(sample.received);
    one.number = sample.number;
    one.stream = sample.stream;
    std::copy_n(all.begin(), axes, one.position.begin());
    std::copy_n(all.begin() + axes, axes, one.velocity.begin());
    statistics_.add(one.seconds);
    cursor_curves_.add(one.seconds, all);
    view_.latest = one;
    view_.greatest_position = greatest_of(view_.greatest_position, one.position);
    view_.greatest_velocity = greatest_of(view_.greatest_velocity, one.velocity);
    if (!thinning_.wants(one.seconds)) {
        return;
    }
    if (queue_.size() == longest_queue) {
        ++unprinted_;
        return;
    }
    one.news = std::exchange(news_, {});
    queue_.push_back(one);
}

void recording::add(const motor_current& currents, time_point received) {
    const std::lock_guard lock(mutex_);
    if (is_closed_) {
        return;
    }
    current_curves_.add(seconds_at(received), currents.values);
    view_.greatest_current = greatest_of(view_.greatest_current, currents.values);
    news_.motor_current = known_.motor_current = currents.values;
}

void recording::add(const power_supply& state) {
    const std::lock_guard lock(mutex_);
    news_.power_supply = known_.power_supply = state.state;
}

void recording::add(const orientation& turned) {
    const std::lock_guard lock(mutex_);
    news_.orientation = known_.orientation = turned;
}

void recording::end(std::string why) {
    const std::lock_guard lock(mutex_);
    if (!end_reason_) {
        end_reason_ = std::move(why);
    }
}

void recording::close() {
    const std::lock_guard lock(mutex_);
    is_closed_ = true;
}

void recording::take(std::vector<observation>& into) {
    into.clear();
    into.reserve(longest_queue);
    const std::lock_guard lock(mutex_);
    queue_.swap(into);
}

std::uint64_t recording::unprinted() const {
    const std::lock_guard lock(mutex_);
    return unprinted_;
}

std::optional<std::string> recording::end_reason() const {
    const std::lock_guard lock(mutex_);
    return end_reason_;
}

live_view recording::view(time_point now) const {
    const std::lock_guard lock(mutex_);
    live_view shown = view_;
    shown.seconds = seconds_at(now);
    shown.samples = statistics_.at(shown.seconds);
    if (shown.latest) {
        shown.latest->news = known_;
    }
    return shown;
}

std::vector<curve_point> recording::cursor_curve(std::size_t channel) const {
    const std::lock_guard lock(mutex_);
    return cursor_curves_.curve(channel);
}

std::vector<curve_point> recording::current_curve(std::size_t motor) const {
    const std::lock_guard lock(mutex_);
    return current_curves_.curve(motor);
}

} // namespace vantu::orvanta::ctl
