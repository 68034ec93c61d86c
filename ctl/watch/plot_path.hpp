// A curve as paths of a picture: thinned to its columns, broken where samples are missing.
#pragma once

#include "ctl/watch/curves.hpp"

#include <string>
#include <string_view>
#include <vector>

namespace vantu::orvanta::ctl {

// Where a panel lies in the picture, and what it shows.
struct frame {
    double left;
    double top;
    double width;
    double height;
    double seconds; // from 0
    double least;
    double most;

    [[nodiscard]] double x(double at_seconds) const { return left + width * at_seconds / seconds; }
    [[nodiscard]] double y(double amount) const { return top + height * (most - amount) / (most - least); }
};

// One point for each unit of width, from the least to the greatest value of all that falls there.
std::vector<curve_point> thinned(const std::vector<curve_point>& points, const frame& inside);

// The places after which a curve is broken: the step to the next point is more than eight times the usual
// one.
std::vector<std::size_t> breaks_of(const std::vector<curve_point>& points);

// The paths of one curve; few points, and such as stand alone, are marked by circles.
std::string path_of(const std::vector<curve_point>& points, const frame& inside, std::string_view colour);

} // namespace vantu::orvanta::ctl
