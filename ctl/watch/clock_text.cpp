#include "ctl/watch/clock_text.hpp"

#include "vantu/orvanta/common/format.hpp"

#include <chrono>

namespace vantu::orvanta::ctl {

std::string clock_text() {
    using namespace std::chrono;
    const auto now = floor<seconds>(system_clock::now());
    const auto today = floor<days>(now);
    const year_month_day date(today);
    const hh_mm_ss time(now - today);
    return formatted("{}-{:02}-{:02} {:02}:{:02}:{:02} UTC", static_cast<int>(date.year()),
                     static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                     time.hours().count(), time.minutes().count(), time.seconds().count());
}

} // namespace vantu::orvanta::ctl
