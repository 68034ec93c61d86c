#include "ctl/arguments/times.hpp"

#include "ctl/report/exit_status.hpp"
#include "vantu/orvanta/common/format.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>

namespace vantu::orvanta::ctl {
namespace {

struct unit {
    std::string_view name;
    double seconds;
};
constexpr std::array units{unit{"ms", 1e-3}, unit{"s", 1}, unit{"m", 60}, unit{"", 1}};

constexpr double least_s = 1e-3;
constexpr double most_s = 86400;

} // namespace

std::chrono::nanoseconds time_of(std::string_view option, std::string_view text) {
    double count = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, count, std::chars_format::fixed);
    const std::string_view rest(stop, static_cast<std::size_t>(end - stop));
    const auto* const found =
        std::find_if(units.begin(), units.end(), [rest](const unit& one) { return one.name == rest; });
    const double seconds = found == units.end() ? 0 : count * found->seconds;
    if (error != std::errc{} || !(seconds >= least_s && seconds <= most_s)) {
        throw failure_with_status(
            exit_status::wrong_usage,
            formatted("{}: '{}' is no time from 1ms to 1440m, such as 500ms, 2s or 10m", option, text));
    }
    return std::chrono::nanoseconds(static_cast<std::int64_t>(seconds * 1e9));
}

} // namespace vantu::orvanta::ctl
