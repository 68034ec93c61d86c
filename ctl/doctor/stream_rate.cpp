#include "ctl/doctor/stream_rate.hpp"

#include "ctl/doctor/milliseconds.hpp"
#include "vantu/orvanta/common/format.hpp"

#include <algorithm>
#include <iterator>
#include <utility>

namespace vantu::orvanta::ctl {
namespace {

constexpr const char* stream_name = "stream";
constexpr double tolerated_difference = 0.1;
constexpr double tolerated_states = 2;
constexpr auto tolerated_pause = std::chrono::milliseconds(100);
constexpr double tolerated_intervals = 3;

struct measured {
    double states;
    double in_first_half;
    double in_second_half;
    std::chrono::nanoseconds longest_pause;
};

double count_between(const std::vector<stream_view::time_point>& times, stream_view::time_point from,
                     stream_view::time_point to) {
    return static_cast<double>(std::count_if(
        times.begin(), times.end(), [&](stream_view::time_point one) { return one >= from && one < to; }));
}

measured measure(const stream_view& seen) {
    const stream_view::time_point middle = seen.begin + (seen.end - seen.begin) / 2;
    measured of{count_between(seen.times, seen.begin, seen.end),
                count_between(seen.times, seen.begin, middle), count_between(seen.times, middle, seen.end),
                std::chrono::nanoseconds(0)};
    stream_view::time_point before = seen.begin;
    for (const stream_view::time_point one : seen.times) {
        if (one >= seen.begin && one < seen.end) {
            of.longest_pause = std::max<std::chrono::nanoseconds>(of.longest_pause, one - before);
            before = one;
        }
    }
    of.longest_pause = std::max<std::chrono::nanoseconds>(of.longest_pause, seen.end - before);
    return of;
}

// The irregularity of a stream in which something came; empty when it is steady.
std::string irregularity_of(const measured& of, std::chrono::nanoseconds time, std::uint64_t rejected) {
    const double more = std::max(of.in_first_half, of.in_second_half);
    const double less = std::min(of.in_first_half, of.in_second_half);
    if (more - less > more * tolerated_difference + tolerated_states) {
        return formatted("; {:.0f} in the first half, {:.0f} in the second", of.in_first_half,
                         of.in_second_half);
    }
    const std::chrono::duration<double, std::nano> interval = time / of.states;
    if (of.longest_pause > tolerated_pause && of.longest_pause > interval * tolerated_intervals) {
        return "; that pause is above 100 ms and three usual intervals";
    }
    return rejected == 0 ? "" : formatted("; {} datagrams made no sense", rejected);
}

} // namespace

finding check_stream(const stream_view& seen) {
    const std::chrono::nanoseconds time = seen.end - seen.begin;
    const measured of = measure(seen);
    if (of.states == 0) {
        return failed(
            stream_name, exit_status::timed_out,
            formatted("device {} sent no cursor state within {}", seen.device_id, milliseconds_text(time)),
            "plug the device in anew, or start the service anew; orvanta-simulator sends states unless it "
            "was given --rate 0");
    }
    const double seconds = std::chrono::duration<double>(time).count();
    const std::string irregularity = irregularity_of(of, time, seen.rejected);
    const std::string told = formatted(
        "device {}: {:.0f} cursor states in {}, {:.0f} Hz, the longest pause {}{}", seen.device_id, of.states,
        milliseconds_text(time), of.states / seconds, milliseconds_text(of.longest_pause), irregularity);
    finding found =
        irregularity.empty()
            ? passed(stream_name, told)
            : warned(stream_name, told,
                     "the stream is not steady: relieve the machine of other work, and see whether the "
                     "device's cable is loose");
    found.figures = {{"rate_hz", of.states / seconds},
                     {"first_half_hz", of.in_first_half / (seconds / 2)},
                     {"second_half_hz", of.in_second_half / (seconds / 2)},
                     {"longest_pause_ms", milliseconds_of(of.longest_pause)}};
    return found;
}

void stream_recorder::begin(std::uint32_t device_id) {
    const std::lock_guard lock(mutex_);
    device_id_ = device_id;
    times_.clear();
}

void stream_recorder::add(std::uint32_t device_id, stream_view::time_point received) {
    const std::lock_guard lock(mutex_);
    if (device_id_ == device_id) {
        times_.push_back(received);
    }
}

std::vector<stream_view::time_point> stream_recorder::take() {
    const std::lock_guard lock(mutex_);
    device_id_.reset();
    return std::exchange(times_, {});
}

} // namespace vantu::orvanta::ctl
