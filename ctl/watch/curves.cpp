#include "ctl/watch/curves.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vantu::orvanta::ctl {
namespace {

constexpr double narrowest_s = 0.0001;
constexpr double never_s = std::numeric_limits<double>::infinity();
constexpr float infinite = std::numeric_limits<float>::infinity();

} // namespace

curve_store::curve_store(std::size_t channels, std::size_t capacity)
    : channels_(channels), width_s_(narrowest_s), columns_(capacity), ranges_(channels * capacity) {
    empty(0);
}

void curve_store::empty(std::size_t from) {
    for (std::size_t at = from; at < columns_.size(); ++at) {
        columns_[at] = {never_s, -never_s};
    }
    for (std::size_t at = from * channels_; at < ranges_.size(); ++at) {
        ranges_[at] = {infinite, -infinite};
    }
}

void curve_store::add(double seconds, std::span<const float> values) {
    while (seconds >= width_s_ * static_cast<double>(columns_.size())) {
        halve();
    }
    const std::size_t at = std::min(static_cast<std::size_t>(seconds / width_s_), columns_.size() - 1);
    columns_[at] = {std::min(columns_[at].first_s, seconds), std::max(columns_[at].last_s, seconds)};
    for (std::size_t channel = 0; channel < channels_; ++channel) {
        const float amount = values[channel];
        if (std::isfinite(amount)) {
            range& into = ranges_[at * channels_ + channel];
            into = {std::min(into.least, amount), std::max(into.most, amount)};
        }
    }
}

void curve_store::halve() {
    for (std::size_t at = 0; at < columns_.size() / 2; ++at) {
        const column& left = columns_[2 * at];
        const column& right = columns_[2 * at + 1];
        columns_[at] = {std::min(left.first_s, right.first_s), std::max(left.last_s, right.last_s)};
        for (std::size_t channel = 0; channel < channels_; ++channel) {
            const range& first = ranges_[2 * at * channels_ + channel];
            const range& second = ranges_[(2 * at + 1) * channels_ + channel];
            ranges_[at * channels_ + channel] = {std::min(first.least, second.least),
                                                 std::max(first.most, second.most)};
        }
    }
    empty(columns_.size() / 2);
    width_s_ *= 2;
}

std::vector<curve_point> curve_store::curve(std::size_t channel) const {
    std::vector<curve_point> points;
    for (std::size_t at = 0; at < columns_.size(); ++at) {
        const range& values = ranges_[at * channels_ + channel];
        if (values.least <= values.most) {
            points.push_back({columns_[at].first_s, columns_[at].last_s, values.least, values.most});
        }
    }
    return points;
}

} // namespace vantu::orvanta::ctl
