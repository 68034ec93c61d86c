#include "ctl/service/traffic_recorder.hpp"

#include "ctl/report/exit_status.hpp"
#include "ctl/report/regular_file.hpp"
#include "ctl/service/captured_traffic.hpp"

#include <limits>
#include <stdexcept>
#include <utility>

namespace vantu::orvanta::ctl {
namespace {

constexpr std::int64_t longest_disorder_ns = 100'000'000;

capture_writer begun(const std::string& path) {
    expect_regular_file(path);
    try {
        return capture_writer(path);
    } catch (const std::runtime_error& why) {
        throw failure_with_status(exit_status::refused, why.what());
    }
}

} // namespace

traffic_recorder::traffic_recorder(const std::string& path) : file_(begun(path)) {}

void traffic_recorder::take(const vantu_orvanta_traffic& told) noexcept {
    captured_datagram one = captured(told);
    const std::lock_guard lock(mutex_);
    const std::int64_t time_ns = one.time_ns;
    kept_.emplace(time_ns, std::move(one));
    write_until(kept_.rbegin()->first - longest_disorder_ns);
}

std::optional<std::string> traffic_recorder::finish() noexcept {
    const std::lock_guard lock(mutex_);
    write_until(std::numeric_limits<std::int64_t>::max());
    return failure_;
}

void traffic_recorder::write_until(std::int64_t time_ns) noexcept {
    const auto end = kept_.upper_bound(time_ns);
    if (end == kept_.begin()) {
        return;
    }
    try {
        for (auto one = kept_.begin(); one != end && !failure_; ++one) {
            file_.write(one->second);
        }
        file_.flush();
    } catch (const std::exception& why) {
        failure_ = failure_.value_or(why.what());
    }
    kept_.erase(kept_.begin(), end);
}

} // namespace vantu::orvanta::ctl
