#include "ctl/watch/axis.hpp"

#include "vantu/orvanta/common/format.hpp"

#include <algorithm>
#include <cmath>

namespace vantu::orvanta::ctl {
namespace {

// A step or two above the wished number are no reason for the next greater step.
constexpr double slightly_more = 1.1;

double round_step(double raw) {
    const double power = std::pow(10.0, std::floor(std::log10(raw)));
    for (const double factor : {1.0, 2.0, 5.0}) {
        if (raw <= factor * power * slightly_more) {
            return factor * power;
        }
    }
    return 10 * power;
}

std::string label_of(double amount, double step) {
    constexpr double most_in_full = 1e6;
    constexpr double least_in_full = 1e-6;
    if (std::abs(amount) >= most_in_full || step < least_in_full) {
        return formatted("{:.6g}", amount);
    }
    const int decimals = std::max(0, static_cast<int>(-std::floor(std::log10(step) + 1e-9)));
    return formatted("{:.{}f}", amount, decimals);
}

} // namespace

axis axis_of(double least, double most, int steps) {
    // Closer together than floats can be told apart, values count as one.
    const double size = std::max(std::abs(least), std::abs(most));
    if (most - least <= size * 1e-6) {
        const double room = size > 0 ? size / 10 : 1;
        least -= room;
        most += room;
    }
    const double step = round_step((most - least) / steps);
    constexpr double slack = 1e-6;
    const auto first = std::llround(std::floor(least / step + slack));
    const auto last = std::llround(std::ceil(most / step - slack));
    axis made{static_cast<double>(first) * step, static_cast<double>(last) * step, {}};
    for (auto at = first; at <= last; ++at) {
        const double amount = static_cast<double>(at) * step;
        made.ticks.push_back({amount, label_of(amount, step)});
    }
    return made;
}

} // namespace vantu::orvanta::ctl
