// Prints a recording as it grows, in one of the formats.
#pragma once

#include "ctl/arguments/request.hpp"
#include "ctl/watch/recording.hpp"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace vantu::orvanta::ctl {

// All of them throw output_closed.
class printer {
  public:
    printer() = default;
    virtual ~printer() = default;
    printer(const printer&) = delete;
    printer& operator=(const printer&) = delete;

    // To be called some hundred times a second, and once at the end.
    virtual void show(recording& from, bool is_last) = 0;
};

struct live_source {
    std::string title;
    std::function<std::uint64_t()> rejected;
    std::optional<double> rate_hz; // of drawing; ten times a second without it
};

std::unique_ptr<printer> printer_for(watch_format format, live_source source);

} // namespace vantu::orvanta::ctl
