#include "ctl/watch/plot_path.hpp"

#include "vantu/orvanta/common/format.hpp"

#include <algorithm>
#include <cmath>

namespace vantu::orvanta::ctl {
namespace {

constexpr std::size_t few_points = 60;
constexpr double usual_steps_to_break = 8;
// In units of the picture: less is hidden by the width of the line.
constexpr double least_extent = 1;

std::string number(double amount) {
    std::string text = formatted("{:.1f}", amount);
    return text.ends_with(".0") ? text.substr(0, text.size() - 2) : text;
}

std::string step(std::string_view verb, double x, double y) {
    return formatted("{}{} {}", verb, number(x), number(y));
}

double middle_of(const curve_point& one, const frame& inside) {
    return inside.y((static_cast<double>(one.least) + one.most) / 2);
}

std::string marks_of(const std::vector<curve_point>& points, const frame& inside, std::string_view colour) {
    std::string text;
    for (const curve_point& one : points) {
        text += formatted("<circle cx=\"{:.1f}\" cy=\"{:.1f}\" r=\"2.5\" fill=\"{}\"/>\n",
                          inside.x(one.from_s), middle_of(one, inside), colour);
    }
    return text;
}

// From the end of each column's values that is nearer to the column before, at the column's first time, to
// the other end at its last: a slope stays one line.
std::string steps_of(const std::vector<curve_point>& points, std::size_t begin, std::size_t end,
                     const frame& inside) {
    std::string text;
    const std::size_t second = std::min(begin + 1, end - 1);
    double y_before = 2 * middle_of(points[begin], inside) - middle_of(points[second], inside);
    for (std::size_t at = begin; at < end; ++at) {
        const curve_point& one = points[at];
        double y_from = inside.y(one.least);
        double y_to = inside.y(one.most);
        if (std::abs(y_from - y_before) > std::abs(y_to - y_before)) {
            std::swap(y_from, y_to);
        }
        const std::string_view verb = at == begin ? "M" : "L";
        if (std::abs(y_from - y_to) < least_extent) {
            text += step(verb, inside.x((one.from_s + one.to_s) / 2), (y_from + y_to) / 2);
        } else {
            text += step(verb, inside.x(one.from_s), y_from) + step("L", inside.x(one.to_s), y_to);
        }
        y_before = y_to;
    }
    return text;
}

} // namespace

std::vector<curve_point> thinned(const std::vector<curve_point>& points, const frame& inside) {
    std::vector<curve_point> fewer;
    double column = -1;
    for (const curve_point& one : points) {
        const double its = std::floor(inside.x(one.from_s));
        if (its != column) {
            fewer.push_back(one);
            column = its;
            continue;
        }
        fewer.back().to_s = one.to_s;
        fewer.back().least = std::min(fewer.back().least, one.least);
        fewer.back().most = std::max(fewer.back().most, one.most);
    }
    return fewer;
}

std::vector<std::size_t> breaks_of(const std::vector<curve_point>& points) {
    std::vector<std::size_t> breaks;
    if (points.size() < 3) {
        return breaks;
    }
    std::vector<double> steps;
    for (std::size_t at = 1; at < points.size(); ++at) {
        steps.push_back(points[at].from_s - points[at - 1].from_s);
    }
    std::vector<double> ordered = steps;
    const auto middle = ordered.begin() + static_cast<std::ptrdiff_t>(ordered.size() / 2);
    std::nth_element(ordered.begin(), middle, ordered.end());
    for (std::size_t at = 0; at < steps.size(); ++at) {
        if (steps[at] > usual_steps_to_break * *middle) {
            breaks.push_back(at);
        }
    }
    return breaks;
}

std::string path_of(const std::vector<curve_point>& points, const frame& inside, std::string_view colour) {
    const std::vector<curve_point> shown = thinned(points, inside);
    std::string text = shown.size() <= few_points ? marks_of(shown, inside, colour) : "";
    std::vector<std::size_t> ends = breaks_of(shown);
    if (!shown.empty()) {
        ends.push_back(shown.size() - 1);
    }
    std::size_t begin = 0;
    for (const std::size_t last : ends) {
        if (last > begin) {
            text += formatted("<path class=\"curve\" stroke=\"{}\" d=\"{}\"/>\n", colour,
                              steps_of(shown, begin, last + 1, inside));
        } else if (shown.size() > few_points) {
            text += marks_of({shown[begin]}, inside, colour);
        }
        begin = last + 1;
    }
    return text;
}

} // namespace vantu::orvanta::ctl
