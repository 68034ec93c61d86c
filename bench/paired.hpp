// Measuring two pieces of work side by side: they alternate, each pair gives one ratio, and the
// median over all pairs is reported, so that what disturbs the machine disturbs both alike.
#pragma once

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <vector>

namespace vantu::orvanta::bench {

inline double now_ns() {
    return std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

inline double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

class pairs {
  public:
    void add(double ours_ns, double bare_ns) {
        ours_.push_back(ours_ns);
        bare_.push_back(bare_ns);
        ratios_.push_back(ours_ns / bare_ns);
    }

    // Puts the medians into the benchmark's row; target 0 for a figure without one.
    void report(benchmark::State& state, double target_ratio) const {
        state.counters["ours_ns"] = median(ours_);
        state.counters["bare_ns"] = median(bare_);
        state.counters["ratio"] = median(ratios_);
        if (target_ratio > 0) {
            state.counters["target"] = target_ratio;
        }
    }

  private:
    std::vector<double> ours_;
    std::vector<double> bare_;
    std::vector<double> ratios_;
};

// Runs ours and bare in turn, once each an iteration; each returns nanoseconds an operation.
template <typename Ours, typename Bare>
void run_pairs(benchmark::State& state, double target_ratio, Ours ours, Bare bare) {
    pairs measured;
    bool ours_first = false;
    for (auto _ : state) {
        ours_first = !ours_first;
        const double first = ours_first ? ours() : bare();
        const double second = ours_first ? bare() : ours();
        const double ours_ns = ours_first ? first : second;
        const double bare_ns = ours_first ? second : first;
        state.SetIterationTime(ours_ns * 1e-9);
        measured.add(ours_ns, bare_ns);
    }
    measured.report(state, target_ratio);
}

} // namespace vantu::orvanta::bench
