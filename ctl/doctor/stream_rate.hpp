// Whether a stream of cursor states is steady. The protocol does not tell at which rate a device sends, and
// states have no number, so a rate is compared with itself: over the whole time, and over its halves. States
// that are lost evenly look like a lower rate.
#pragma once

#include "ctl/doctor/finding.hpp"

#include <chrono>
#include <cstdint>
#include <mutex>
#include <optional>
#include <vector>

namespace vantu::orvanta::ctl {

// When the states of one device came.
struct stream_view {
    using time_point = std::chrono::steady_clock::time_point;
    std::uint32_t device_id{0};
    time_point begin;
    time_point end;
    std::vector<time_point> times; // in their order; those before the begin and after the end do not count
    std::uint64_t rejected{0};     // datagrams that made no sense meanwhile
};

// Failed when no state came. A warning when the halves differ by more than a tenth and two states, when the
// longest pause is above 100 ms and three usual intervals, or when datagrams were rejected. Figures: rate_hz,
// first_half_hz, second_half_hz, longest_pause_ms.
[[nodiscard]] finding check_stream(const stream_view& seen);

// Takes down when states come, on the session's thread, between begin and take.
class stream_recorder {
  public:
    void begin(std::uint32_t device_id);
    void add(std::uint32_t device_id, stream_view::time_point received);
    [[nodiscard]] std::vector<stream_view::time_point> take();

  private:
    std::mutex mutex_;
    std::optional<std::uint32_t> device_id_;
    std::vector<stream_view::time_point> times_;
};

} // namespace vantu::orvanta::ctl
