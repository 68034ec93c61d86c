#include "ctl/watch/printers.hpp"

#include "ctl/report/output.hpp"
#include "ctl/report/terminal.hpp"
#include "ctl/watch/block.hpp"
#include "ctl/watch/live_screen.hpp"
#include "ctl/watch/rows.hpp"

#include <algorithm>
#include <chrono>
#include <utility>
#include <vector>

namespace vantu::orvanta::ctl {
namespace {

class row_printer : public printer {
  public:
    using row = std::string (*)(const observation&);

    row_printer(std::string header, row of) : pending_(std::move(header)), row_(of) {}

    void show(recording& from, bool) override {
        from.take(taken_);
        for (const observation& one : taken_) {
            pending_ += row_(one);
        }
        if (!pending_.empty()) {
            output::write(std::exchange(pending_, {}));
        }
    }

  private:
    std::string pending_;
    row row_;
    std::vector<observation> taken_;
};

class live_printer : public printer {
  public:
    explicit live_printer(live_source source) : source_(std::move(source)) {}

    void show(recording& from, bool is_last) override {
        from.take(unused_);
        const auto now = std::chrono::steady_clock::now();
        if (now < due_ && !is_last) {
            return;
        }
        due_ = now + period();
        const std::size_t columns = terminal_columns();
        const std::size_t lines = terminal_lines();
        const block_style style{columns, lines, output_has_colour()};
        output::write(screen_.redraw(block_of(source_.title, from.view(now), source_.rejected(), style),
                                     columns, lines));
    }

  private:
    [[nodiscard]] std::chrono::nanoseconds period() const {
        constexpr double usual_hz = 10;
        constexpr double most_hz = 50;
        const double rate_hz = std::min(source_.rate_hz.value_or(usual_hz), most_hz);
        return std::chrono::nanoseconds(static_cast<std::int64_t>(1e9 / rate_hz));
    }

    live_source source_;
    live_screen screen_;
    std::chrono::steady_clock::time_point due_{};
    std::vector<observation> unused_;
};

} // namespace

std::unique_ptr<printer> printer_for(watch_format format, live_source source) {
    switch (format) {
    case watch_format::live:
        return std::make_unique<live_printer>(std::move(source));
    case watch_format::lines:
        return std::make_unique<row_printer>("", line_of);
    case watch_format::csv:
        return std::make_unique<row_printer>(csv_header(), csv_row);
    case watch_format::json:
        return std::make_unique<row_printer>("", json_row);
    }
    return nullptr;
}

} // namespace vantu::orvanta::ctl
