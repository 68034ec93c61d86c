// Curves over a time of any length in memory of one size: least and greatest value of each column of time.
// When the columns are used up, two become one.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace vantu::orvanta::ctl {

struct curve_point {
    double from_s; // the time of the column's first sample
    double to_s;   // and of its last
    float least;
    float most;
};

class curve_store {
  public:
    // An even capacity.
    curve_store(std::size_t channels, std::size_t capacity);

    // A value for each channel, at a time that is not negative. What is no finite number is left out.
    void add(double seconds, std::span<const float> values);

    // The filled columns of one channel, in the order of time.
    [[nodiscard]] std::vector<curve_point> curve(std::size_t channel) const;

  private:
    struct range {
        float least;
        float most;
    };
    struct column {
        double first_s;
        double last_s;
    };
    void halve();
    void empty(std::size_t from);

    std::size_t channels_;
    double width_s_;
    std::vector<column> columns_;
    std::vector<range> ranges_; // channels_ of each column
};

} // namespace vantu::orvanta::ctl
