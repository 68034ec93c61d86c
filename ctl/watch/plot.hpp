// A picture of curves over time, as one SVG file that needs nothing else.
#pragma once

#include "ctl/watch/curves.hpp"

#include <string>
#include <vector>

namespace vantu::orvanta::ctl {

struct plot_curve {
    std::string name; // in the legend
    std::vector<curve_point> points;
};

struct plot_panel {
    std::string title;              // with the unit
    std::vector<plot_curve> curves; // up to three
};

struct plot {
    std::string title;
    std::string subtitle;
    double seconds; // of the axis of time, at least
    std::vector<plot_panel> panels;
};

// No more than two points of a curve for each unit of width, whatever the curves hold. A curve is broken
// where nothing came for much longer than usual.
std::string svg_of(const plot& drawn);

} // namespace vantu::orvanta::ctl
