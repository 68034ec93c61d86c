#include "ctl/watch/block.hpp"

#include "vantu/orvanta/common/format.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <span>

namespace vantu::orvanta::ctl {
namespace {

constexpr std::size_t label_width = 16;
constexpr std::size_t value_width = 10;
constexpr std::size_t longest_bar = 61;
constexpr std::size_t shortest_bar = 5;
constexpr std::size_t scale_width = 8;
// From here on the scale stands beside its bar.
constexpr std::size_t width_for_scales = 60;

constexpr std::string_view bold = "\x1b[1m";
constexpr std::string_view cyan = "\x1b[36m";
constexpr std::string_view yellow = "\x1b[33m";
constexpr std::string_view plain = "\x1b[0m";

struct quantity {
    std::string_view name;
    std::span<const std::string_view> parts;
};
constexpr std::array<std::string_view, 4> quaternion_names{"r", "x", "y", "z"};

class writer {
  public:
    explicit writer(const block_style& style)
        : style_(style), width_(std::max<std::size_t>(style.columns, 2) - 1) {}

    void line(std::string text, std::string_view colour = {}) {
        text.resize(std::min(text.size(), width_));
        lines_.push_back(coloured(text, colour));
    }

    void fact(std::string_view label, std::string_view text, std::string_view colour = {}) {
        line(formatted("{:<{}}{}", label, label_width, text), colour);
    }

    // A line a value; "-" where there are none yet.
    void values(const quantity& of, std::span<const float> values, float scale) {
        for (std::size_t at = 0; at < of.parts.size(); ++at) {
            const std::string label = formatted("{} {}", of.name, of.parts[at]);
            if (values.empty()) {
                fact(label, formatted("{:>{}}", "-", value_width));
            } else {
                bar_line(label, values[at], scale);
            }
        }
    }

    std::vector<std::string> take() {
        lines_.resize(std::min(lines_.size(), std::max<std::size_t>(style_.lines, 2) - 1));
        return std::move(lines_);
    }

  private:
    void bar_line(std::string_view label, float amount, float scale) {
        const bool fits = std::abs(amount) < 1000;
        const std::string number = fits ? formatted("{:>+{}.4f}", amount, value_width)
                                        : formatted("{:>+{}.3g}", amount, value_width);
        const bool tells_scale = width_ >= width_for_scales;
        const std::size_t taken = label_width + value_width + 1 + (tells_scale ? scale_width : 0);
        const std::size_t bar = std::min(width_ > taken ? width_ - taken : 0, longest_bar);
        if (bar < shortest_bar) {
            fact(label, number);
            return;
        }
        lines_.push_back(formatted("{:<{}}{} {}{}", label, label_width, number,
                                   coloured(bar_of(amount, scale, bar), cyan),
                                   tells_scale ? formatted(" {:.4g}", scale) : ""));
    }

    [[nodiscard]] std::string coloured(const std::string& text, std::string_view colour) const {
        return style_.colour && !colour.empty() ? formatted("{}{}{}", colour, text, plain) : text;
    }

    block_style style_;
    std::size_t width_;
    std::vector<std::string> lines_;
};

std::string missing_text(const sample_statistics::figures& samples) {
    constexpr double least_told = 0.01;
    if (!samples.missing) {
        return "not known";
    }
    return *samples.missing < least_told ? "none seen" : formatted("about {:.0f} %", *samples.missing * 100);
}

} // namespace

std::vector<std::string> block_of(std::string_view title, const live_view& shown, std::uint64_t rejected,
                                  const block_style& style) {
    const quantity position{"position", axis_names};
    const quantity velocity{"velocity", axis_names};
    const quantity orientation{"orientation", quaternion_names};
    const quantity current{"motor current", motor_names};
    const sample_statistics::figures& samples = shown.samples;
    const side_values news = shown.latest ? shown.latest->news : side_values{};
    const std::span<const float> none;

    writer to(style);
    to.line(formatted("{:.1f} s  {}", shown.seconds, title), bold);
    to.values(position, shown.latest ? std::span<const float>(shown.latest->position) : none,
              scale_for(shown.greatest_position));
    to.values(velocity, shown.latest ? std::span<const float>(shown.latest->velocity) : none,
              scale_for(shown.greatest_velocity));
    const std::array<float, 4> turned =
        news.orientation ? values_of(*news.orientation) : std::array<float, 4>{};
    to.values(orientation, news.orientation ? std::span<const float>(turned) : none, 1);
    to.values(current, news.motor_current ? std::span<const float>(*news.motor_current) : none,
              scale_for(shown.greatest_current));
    to.fact("power supply",
            formatted("{:>{}}", news.power_supply ? formatted("{}", *news.power_supply) : "-", value_width));
    to.fact("rate", formatted("{:>{}.1f} a second", samples.rate_hz, value_width));
    to.fact("samples", formatted("{:>{}}", samples.count, value_width));
    const std::string missing = missing_text(samples);
    to.fact("missing", formatted("{:>{}}", missing, value_width), missing.starts_with("about") ? yellow : "");
    to.fact("rejected", formatted("{:>{}}", rejected, value_width), rejected > 0 ? yellow : "");
    to.fact("longest gap", formatted("{:>{}.1f} ms", samples.longest_gap_s * 1000, value_width));
    to.fact("units", "as the service has them");
    return to.take();
}

std::string bar_of(float amount, float scale, std::size_t length) {
    const std::size_t half = length < shortest_bar ? 1 : (length - 3) / 2;
    const float part = std::isfinite(amount) ? std::clamp(amount / scale, -1.0F, 1.0F) : 0.0F;
    const auto filled = static_cast<std::size_t>(std::lround(std::abs(part) * static_cast<float>(half)));
    std::string left(half, ' ');
    std::string right(half, ' ');
    if (part < 0) {
        std::fill_n(left.rbegin(), filled, '#');
    } else {
        std::fill_n(right.begin(), filled, '#');
    }
    return "[" + left + "|" + right + "]";
}

float scale_for(float greatest) {
    if (!(greatest > 0)) {
        return 1;
    }
    const double power = std::pow(10.0, std::floor(std::log10(static_cast<double>(greatest))));
    for (const double factor : {1.0, 2.0, 5.0}) {
        if (greatest <= static_cast<float>(factor * power)) {
            return static_cast<float>(factor * power);
        }
    }
    return static_cast<float>(10 * power);
}

} // namespace vantu::orvanta::ctl
