// How many samples came, how fast and how evenly. The wire has no counter, so that a lost sample leaves no
// trace but a gap in time: the missing share is an estimate from these gaps.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace vantu::orvanta::ctl {

// Times are in seconds and do not go back.
class sample_statistics {
  public:
    void add(double seconds);

    struct figures {
        std::uint64_t count{0};
        double rate_hz{0};               // over the last full second, or as much of it as there was
        double longest_gap_s{0};         // between two samples, or since the last one
        std::optional<double> missing{}; // the share, 0 to 1; empty while it is not known
    };
    [[nodiscard]] figures at(double now_s) const;

  private:
    // Samples in a tenth of a second.
    struct slot {
        std::int64_t index{-1};
        std::uint32_t count{0};
    };
    static constexpr std::size_t slots_kept = 16; // more than the ten of a second
    // Gaps that are judged together: by their median, as most samples are not lost.
    static constexpr std::size_t gaps_at_once = 256;

    [[nodiscard]] double rate_at(double now_s) const;
    void judge_gaps();

    std::uint64_t count_{0};
    double first_s_{0};
    double last_s_{0};
    double longest_gap_s_{0};
    std::array<slot, slots_kept> slots_{};
    std::array<double, gaps_at_once> gaps_{};
    std::size_t gaps_waiting_{0};
    double expected_{0}; // samples, where they came evenly enough to tell
    double seen_{0};
};

} // namespace vantu::orvanta::ctl
