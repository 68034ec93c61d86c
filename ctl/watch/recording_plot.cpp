#include "ctl/watch/recording_plot.hpp"

#include "vantu/orvanta/common/format.hpp"

#include <utility>

namespace vantu::orvanta::ctl {
plot plot_of(const recording& taken, const live_view& at_end, std::string title,
             std::chrono::system_clock::time_point began) {
    const double seconds = at_end.latest ? at_end.latest->seconds : 0;
    plot drawn{std::move(title),
               formatted("{}, {:.1f} s, {} {}", date_text(began), seconds, at_end.samples.count,
                         at_end.samples.count == 1 ? "sample" : "samples"),
               seconds,
               {{"position [unit not specified]", {}},
                {"velocity [unit not specified]", {}},
                {"motor current [unit not specified]", {}}}};
    for (std::size_t at = 0; at < axes; ++at) {
        drawn.panels[0].curves.push_back({std::string(axis_names.at(at)), taken.cursor_curve(at)});
        drawn.panels[1].curves.push_back({std::string(axis_names.at(at)), taken.cursor_curve(axes + at)});
    }
    for (std::size_t at = 0; at < motors; ++at) {
        drawn.panels[2].curves.push_back({std::string(motor_names.at(at)), taken.current_curve(at)});
    }
    return drawn;
}

std::string date_text(std::chrono::system_clock::time_point when) {
    using namespace std::chrono;
    const auto second = floor<seconds>(when);
    const auto day = floor<days>(second);
    const year_month_day date(day);
    const hh_mm_ss time(second - day);
    return formatted("{}-{:02}-{:02} {:02}:{:02}:{:02} UTC", static_cast<int>(date.year()),
                     static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                     time.hours().count(), time.minutes().count(), time.seconds().count());
}

} // namespace vantu::orvanta::ctl
