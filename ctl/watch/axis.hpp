// The round numbers along an axis.
#pragma once

#include <string>
#include <vector>

namespace vantu::orvanta::ctl {

struct tick {
    double value;
    std::string label;
};

// An axis that reaches from the first round number at or below the values to the last at or above them.
struct axis {
    double begin;
    double end;
    std::vector<tick> ticks;
};

// About so many steps of 1, 2 or 5 times a power of ten. A single value gets room on both sides.
axis axis_of(double least, double most, int steps);

} // namespace vantu::orvanta::ctl
