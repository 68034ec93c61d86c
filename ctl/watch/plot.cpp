#include "ctl/watch/plot.hpp"

#include "ctl/watch/axis.hpp"
#include "ctl/watch/plot_path.hpp"
#include "vantu/orvanta/common/format.hpp"

#include <algorithm>
#include <array>
#include <limits>
#include <string_view>

namespace vantu::orvanta::ctl {
namespace {

constexpr double width = 960;
constexpr double left = 84;
constexpr double right = 24;
constexpr double head = 72;
constexpr double foot = 56;
constexpr double panel_height = 170;
constexpr double panel_distance = 46;
constexpr double plot_width = width - left - right;
constexpr int steps_of_time = 10;
constexpr int steps_of_values = 4;
constexpr double legend_step = 52;
constexpr double room_for_last_tick = 0.005;

// Told apart with any colour vision.
constexpr std::array<std::string_view, 3> colours{"#0072b2", "#d55e00", "#009e73"};

std::string escaped(std::string_view text) {
    std::string safe;
    for (const char letter : text) {
        switch (letter) {
        case '&':
            safe += "&amp;";
            break;
        case '<':
            safe += "&lt;";
            break;
        case '>':
            safe += "&gt;";
            break;
        default:
            safe += letter;
        }
    }
    return safe;
}

std::string text_at(double x, double y, std::string_view attributes, std::string_view text) {
    return formatted("<text x=\"{:.1f}\" y=\"{:.1f}\"{}>{}</text>\n", x, y, attributes, escaped(text));
}

std::string line_between(double x1, double y1, double x2, double y2, std::string_view kind) {
    return formatted("<path class=\"{}\" d=\"M{:.1f} {:.1f}L{:.1f} {:.1f}\"/>\n", kind, x1, y1, x2, y2);
}

axis axis_for(const plot_panel& panel) {
    double least = std::numeric_limits<double>::max();
    double most = std::numeric_limits<double>::lowest();
    for (const plot_curve& one : panel.curves) {
        for (const curve_point& point : one.points) {
            least = std::min<double>(least, point.least);
            most = std::max<double>(most, point.most);
        }
    }
    return least <= most ? axis_of(least, most, steps_of_values) : axis_of(-1, 1, steps_of_values);
}

// The axis of time ends with the last sample, or with a round number just after it.
axis axis_of_time(const plot& drawn) {
    double end = drawn.seconds;
    for (const plot_panel& panel : drawn.panels) {
        for (const plot_curve& one : panel.curves) {
            end = one.points.empty() ? end : std::max(end, one.points.back().to_s);
        }
    }
    end = end > 0 ? end : 1;
    axis made = axis_of(0, end, steps_of_time);
    made.end = made.ticks.back().value <= end * (1 + room_for_last_tick) ? made.ticks.back().value : end;
    const auto beyond = [&made](const tick& one) { return one.value > made.end; };
    made.ticks.erase(std::remove_if(made.ticks.begin(), made.ticks.end(), beyond), made.ticks.end());
    return made;
}

std::string legend_of(const plot_panel& panel, double top) {
    std::string text;
    double x = width - right - legend_step * static_cast<double>(panel.curves.size());
    for (std::size_t at = 0; at < panel.curves.size(); ++at) {
        text += formatted("<path d=\"M{:.1f} {:.1f}h18\" stroke=\"{}\" stroke-width=\"3\"/>\n", x + 8,
                          top - 12, colours.at(at));
        text += text_at(x + 32, top - 8, "", panel.curves[at].name);
        x += legend_step;
    }
    return text;
}

std::string panel_of(const plot_panel& panel, const axis& time, double top, bool is_last) {
    const axis values = axis_for(panel);
    const frame inside{left, top, plot_width, panel_height, time.end, values.begin, values.end};
    std::string text = text_at(left, top - 8, " class=\"panel\"", panel.title) + legend_of(panel, top);
    for (const tick& one : values.ticks) {
        text += line_between(left, inside.y(one.value), left + plot_width, inside.y(one.value), "grid");
        text += text_at(left - 8, inside.y(one.value) + 4, " text-anchor=\"end\"", one.label);
    }
    for (const tick& one : time.ticks) {
        text += line_between(inside.x(one.value), top, inside.x(one.value), top + panel_height, "grid");
        if (is_last) {
            text +=
                text_at(inside.x(one.value), top + panel_height + 18, " text-anchor=\"middle\"", one.label);
        }
    }
    text +=
        formatted("<rect x=\"{:.1f}\" y=\"{:.1f}\" width=\"{:.1f}\" height=\"{:.1f}\" class=\"frame\"/>\n",
                  left, top, plot_width, panel_height);
    for (std::size_t at = 0; at < panel.curves.size(); ++at) {
        text += path_of(panel.curves[at].points, inside, colours.at(at));
    }
    const bool is_empty = std::all_of(panel.curves.begin(), panel.curves.end(),
                                      [](const plot_curve& one) { return one.points.empty(); });
    return is_empty ? text + text_at(left + plot_width / 2, top + panel_height / 2,
                                     " class=\"frame-text\" text-anchor=\"middle\"", "no values came")
                    : text;
}

} // namespace

std::string svg_of(const plot& drawn) {
    const double distance = panel_height + panel_distance;
    const double height =
        head + distance * static_cast<double>(drawn.panels.size()) - panel_distance + 20 + foot;
    std::string text = formatted(
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 {0:.0f} {1:.0f}\" width=\"{0:.0f}\" "
        "height=\"{1:.0f}\" font-family=\"sans-serif\" font-size=\"12\" fill=\"#333333\">\n"
        "<title>{2}</title>\n"
        "<style>.grid{{stroke:#e4e4e4;fill:none}}.frame{{stroke:#808080;fill:none}}"
        ".curve{{fill:none;stroke-width:1.4;stroke-linejoin:round;stroke-linecap:round}}"
        ".panel{{font-size:13px;font-weight:bold}}.title{{font-size:17px;font-weight:bold}}</style>\n"
        "<rect width=\"100%\" height=\"100%\" fill=\"#ffffff\"/>\n",
        width, height, escaped(drawn.title));
    text += text_at(left, 26, " class=\"title\"", drawn.title);
    text += text_at(left, 44, "", drawn.subtitle);
    const axis time = axis_of_time(drawn);
    double top = head + 20;
    for (std::size_t at = 0; at < drawn.panels.size(); ++at) {
        text += panel_of(drawn.panels[at], time, top, at + 1 == drawn.panels.size());
        top += distance;
    }
    text += text_at(left + plot_width / 2, height - 16, " text-anchor=\"middle\"", "time [s]");
    return text + "</svg>\n";
}

} // namespace vantu::orvanta::ctl
