#include "ctl/watch/statistics.hpp"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace vantu::orvanta::ctl {
namespace {

constexpr double slot_s = 0.1;
constexpr std::int64_t slots_of_a_second = 10;

std::int64_t slot_of(double seconds) {
    return static_cast<std::int64_t>(std::floor(seconds / slot_s));
}

} // namespace

void sample_statistics::add(double seconds) {
    if (count_ == 0) {
        first_s_ = seconds;
    } else {
        const double gap_s = seconds - last_s_;
        longest_gap_s_ = std::max(longest_gap_s_, gap_s);
        gaps_[gaps_waiting_++] = gap_s;
        if (gaps_waiting_ == gaps_.size()) {
            judge_gaps();
            gaps_waiting_ = 0;
        }
    }
    ++count_;
    last_s_ = seconds;
    const std::int64_t index = slot_of(seconds - first_s_);
    slot& into = slots_[static_cast<std::size_t>(index) % slots_.size()];
    if (into.index != index) {
        into = {index, 0};
    }
    ++into.count;
}

// With gaps of one length but for the lost samples, the span holds span / median samples. Samples that come
// in bunches say nothing: their short gaps are no fast stream, and their long ones no losses.
void sample_statistics::judge_gaps() {
    constexpr double most_short_ones = 0.25;
    constexpr double credible = 0.5;
    constexpr double few_long_ones = 0.02;
    std::array<double, gaps_at_once> ordered = gaps_;
    auto* const middle = ordered.begin() + ordered.size() / 2;
    std::nth_element(ordered.begin(), middle, ordered.end());
    const double median = *middle;
    if (median <= 0) {
        return;
    }
    const auto share = [&](auto fits) {
        return static_cast<double>(std::count_if(gaps_.begin(), gaps_.end(), fits)) /
               static_cast<double>(gaps_.size());
    };
    const double seen = static_cast<double>(gaps_.size());
    const double expected = std::accumulate(gaps_.begin(), gaps_.end(), 0.0) / median;
    const bool bunched = share([median](double gap) { return gap < median / 2; }) > most_short_ones;
    const bool too_many = 1 - seen / expected > credible &&
                          share([median](double gap) { return gap > 1.5 * median; }) > few_long_ones;
    if (!bunched && !too_many) {
        expected_ += expected;
        seen_ += seen;
    }
}

double sample_statistics::rate_at(double now_s) const {
    const std::int64_t end = slot_of(now_s - first_s_);
    const std::int64_t begin = std::max<std::int64_t>(end - slots_of_a_second, 0);
    if (count_ == 0 || end <= begin) {
        return 0;
    }
    std::uint64_t count = 0;
    for (const slot& one : slots_) {
        count += one.index >= begin && one.index < end ? one.count : 0;
    }
    return static_cast<double>(count) / (static_cast<double>(end - begin) * slot_s);
}

sample_statistics::figures sample_statistics::at(double now_s) const {
    figures now{count_, rate_at(now_s), longest_gap_s_, std::nullopt};
    if (count_ > 0) {
        now.longest_gap_s = std::max(longest_gap_s_, now_s - last_s_);
    }
    if (expected_ > 0) {
        now.missing = std::max(1 - seen_ / expected_, 0.0);
    }
    return now;
}

} // namespace vantu::orvanta::ctl
