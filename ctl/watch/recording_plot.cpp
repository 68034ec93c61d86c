#include "ctl/watch/recording_plot.hpp"

#include "vantu/orvanta/common/format.hpp"

#include <array>
#include <utility>

namespace vantu::orvanta::ctl {
namespace {

constexpr std::array<const char*, axes> axis_names{"x", "y", "z"};
constexpr std::array<const char*, motors> motor_names{"1", "2", "3"};

} // namespace

plot plot_of(const recording& taken, const live_view& at_end, std::string title, const std::string& began) {
    const double seconds = at_end.latest ? at_end.latest->seconds : 0;
    plot drawn{std::move(title),
               formatted("{}, {:.1f} s, {} samples", began, seconds, at_end.samples.count),
               seconds,
               {{"position [unit not specified]", {}},
                {"velocity [unit not specified]", {}},
                {"motor current [unit not specified]", {}}}};
    for (std::size_t at = 0; at < axes; ++at) {
        drawn.panels[0].curves.push_back({axis_names.at(at), taken.cursor_curve(at)});
        drawn.panels[1].curves.push_back({axis_names.at(at), taken.cursor_curve(axes + at)});
    }
    for (std::size_t at = 0; at < motors; ++at) {
        drawn.panels[2].curves.push_back({motor_names.at(at), taken.current_curve(at)});
    }
    return drawn;
}

} // namespace vantu::orvanta::ctl
