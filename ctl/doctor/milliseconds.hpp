// Times as the doctor tells them: "0.31 ms", "125 ms".
#pragma once

#include "vantu/orvanta/common/format.hpp"

#include <chrono>
#include <string>

namespace vantu::orvanta::ctl {

[[nodiscard]] inline double milliseconds_of(std::chrono::nanoseconds time) noexcept {
    return std::chrono::duration<double, std::milli>(time).count();
}

// Three digits or more.
[[nodiscard]] inline std::string milliseconds_text(std::chrono::nanoseconds time) {
    const double milliseconds = milliseconds_of(time);
    const int decimals = milliseconds < 10 ? 2 : milliseconds < 100 ? 1 : 0;
    return formatted("{:.{}f} ms", milliseconds, decimals);
}

} // namespace vantu::orvanta::ctl
