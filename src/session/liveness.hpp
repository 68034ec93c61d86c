// Whether the service is still there: when its silence is to be broken by a question, and when it has been
// silent for too long. No clock: times are passed in.
#pragma once

#include "vantu/orvanta/common/nanoseconds.hpp"

#include <cstdint>

namespace vantu::orvanta {

class liveness {
  public:
    // An interval of 0 or less: no question is ever due.
    liveness(std::int64_t interval_ns, std::int64_t now_ns) : interval_ns_(interval_ns), since_ns_(now_ns) {}

    // Something came from the service.
    void heard(std::int64_t now_ns) {
        since_ns_ = now_ns;
        questions_ = 0;
    }

    enum class verdict : std::uint8_t { wait, ask, lost };

    // Tells what is to be done now. Counts a question that is to be asked as asked.
    [[nodiscard]] verdict judge(std::int64_t now_ns) {
        if (interval_ns_ <= 0 || now_ns < due_ns()) {
            return verdict::wait;
        }
        if (questions_ == questions_allowed) {
            return verdict::lost;
        }
        since_ns_ = now_ns;
        ++questions_;
        return verdict::ask;
    }

    // When to ask for the next judgement.
    [[nodiscard]] std::int64_t due_ns() const {
        return interval_ns_ <= 0 ? latest_ns
                                 : time_after(since_ns_, static_cast<std::uint64_t>(interval_ns_));
    }

  private:
    static constexpr int questions_allowed = 3;

    std::int64_t interval_ns_;
    std::int64_t since_ns_; // of the last word, or the last question
    int questions_{0};      // without an answer
};

} // namespace vantu::orvanta
