#include "ctl/service/traffic_recorder.hpp"

#include "ctl/report/exit_status.hpp"
#include "ctl/report/regular_file.hpp"

#include <cstring>
#include <limits>
#include <stdexcept>
#include <utility>

namespace vantu::orvanta::ctl {
namespace {

constexpr std::uint8_t version_6 = 6;
constexpr std::int64_t longest_disorder_ns = 100'000'000;

socket_place place_of(const vantu_orvanta_traffic_address& told, bool is_ipv6) {
    socket_place place;
    static_assert(sizeof place.address == sizeof told.address);
    place.is_ipv6 = is_ipv6;
    std::memcpy(place.address.data(), told.address, sizeof told.address);
    place.port = told.port;
    return place;
}

capture_writer begun(const std::string& path) {
    expect_regular_file(path);
    try {
        return capture_writer(path);
    } catch (const std::runtime_error& why) {
        throw failure_with_status(exit_status::refused, why.what());
    }
}

} // namespace

captured_datagram captured(const vantu_orvanta_traffic& told) {
    const bool is_ipv6 = told.local.version == version_6 || told.peer.version == version_6;
    const socket_place local = place_of(told.local, is_ipv6);
    const socket_place peer = place_of(told.peer, is_ipv6);
    const bool is_sent = told.way == vantu_orvanta_traffic_sent;
    const auto* const first = reinterpret_cast<const std::byte*>(told.bytes);
    captured_datagram kept{static_cast<std::int64_t>(told.system_ns),
                           is_sent ? local : peer,
                           is_sent ? peer : local,
                           {first, first + told.length}};
    kept.bytes.resize(told.whole_length < told.length ? told.length + 1 : told.whole_length);
    return kept;
}

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
