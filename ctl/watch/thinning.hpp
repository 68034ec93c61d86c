// Which samples of a stream are printed where fewer are wanted than come.
#pragma once

#include <algorithm>
#include <optional>

namespace vantu::orvanta::ctl {

class thinning {
  public:
    // Empty: all are wanted.
    explicit thinning(std::optional<double> rate_hz) : period_s_(rate_hz ? 1 / *rate_hz : 0) {}

    // Times do not go back. Of the samples around the due time the nearest is wanted, so that jitter does not
    // thin a stream of just the wanted rate.
    bool wants(double seconds) {
        const double early_s = std::min((seconds - before_s_) / 2, period_s_ / 4);
        before_s_ = seconds;
        if (seconds < due_s_ - early_s) {
            return false;
        }
        due_s_ = std::max(due_s_, seconds - period_s_ / 4) + period_s_;
        return true;
    }

  private:
    double period_s_;
    double due_s_{0};
    double before_s_{0};
};

} // namespace vantu::orvanta::ctl
