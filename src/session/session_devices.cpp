// The session's devices: their arrival, their removal, and that those kept open are opened again.
#include "session_implementation.hpp"
#include "values.hpp"
#include "vantu/orvanta/common/nanoseconds.hpp"
#include "vantu/orvanta/orvanta.h"

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

namespace vantu::orvanta {
namespace {

// The time between two attempts to open a device again.
constexpr std::chrono::nanoseconds shortest_opening = std::chrono::milliseconds(10);
constexpr std::chrono::nanoseconds longest_opening = std::chrono::seconds(1);

} // namespace

void session::implementation::list_devices(client& with, std::int64_t now_ns) {
    for (const std::uint32_t id : device_ids(with.context())) {
        vantu_orvanta_device record{};
        if (vantu_orvanta_device_info(with.context(), id, &record) != vantu_orvanta_success ||
            record.device_type == vantu_orvanta_device_type_none) {
            continue;
        }
        arrivals_.listed(id, now_ns);
        if (has_details(record)) {
            arrivals_.described(id);
        }
    }
}

void session::implementation::announce(client& with, std::int64_t now_ns) {
    std::vector<device> arriving;
    for (const std::uint32_t id : arrivals_.take_due(now_ns)) {
        vantu_orvanta_device record{};
        if (vantu_orvanta_device_info(with.context(), id, &record) == vantu_orvanta_success) {
            arriving.push_back(value_of(id, record));
        }
    }
    const bool all_have_arrived = arrivals_.due_ns() == latest_ns;
    {
        const std::lock_guard lock(mutex_);
        arrived_.insert(arrived_.end(), arriving.begin(), arriving.end());
        arrivals_so_far_ += arriving.size();
        if (has_looked_ && arriving.empty() && all_have_arrived_ == all_have_arrived) {
            return;
        }
        has_looked_ = true;
        all_have_arrived_ = all_have_arrived;
    }
    changed_.notify_all();
    for (const device& one : arriving) {
        if (options_.callbacks.on_arrival && !is_stopping()) {
            options_.callbacks.on_arrival(owner_, one);
        }
        open_again(with, one.id);
    }
}

void session::implementation::open_again(client& with, std::uint32_t device_id) {
    if (!is_kept_open(device_id)) {
        return;
    }
    const request_options once{std::clamp(options_.request_timeout, shortest_opening, longest_opening),
                               nullptr};
    const auto repeat_when_lost = [this, device_id](client& same, const reply<void>& answer) {
        if (answer.result == outcome::timed_out) {
            open_again(same, device_id);
        }
    };
    // Another thread's request that changes the device is entered, then sent: one that is entered meanwhile
    // may have gone out already, and one that is entered later goes out later.
    for (bool opens = true;;) {
        (void)(opens ? with.device_open(device_id, 0, repeat_when_lost, once)
                     : with.device_close(device_id, {}, once));
        if (opens != was_closed_last(device_id)) {
            return;
        }
        opens = !opens;
    }
}

std::string session::implementation::uuid_under_lock(std::uint32_t device_id) const {
    vantu_orvanta_device record{};
    if (client_ == nullptr ||
        vantu_orvanta_device_info(client_->context(), device_id, &record) != vantu_orvanta_success) {
        return {};
    }
    return value_of(device_id, record).uuid;
}

bool session::implementation::is_kept_open(std::uint32_t device_id) const {
    const std::lock_guard lock(mutex_);
    return kept_open_.count(uuid_under_lock(device_id)) != 0;
}

bool session::implementation::was_closed_last(std::uint32_t device_id) const {
    const std::lock_guard lock(mutex_);
    const auto asked = asked_.find(device_id);
    return asked != asked_.end() && asked->second.closing > asked->second.opening;
}

std::uint64_t session::implementation::opening(std::uint32_t device_id) {
    const std::lock_guard lock(mutex_);
    return asked_[device_id].opening = ++last_call_;
}

void session::implementation::opened(std::uint32_t device_id, std::uint64_t opening) {
    const std::lock_guard lock(mutex_);
    const auto asked = asked_.find(device_id);
    const bool was_closed = asked != asked_.end() && opening < asked->second.closing;
    if (const std::string uuid = uuid_under_lock(device_id); !uuid.empty() && !was_closed) {
        kept_open_.insert(uuid);
    }
}

void session::implementation::closing(std::uint32_t device_id) {
    const std::lock_guard lock(mutex_);
    if (const std::string uuid = uuid_under_lock(device_id); !uuid.empty()) {
        kept_open_.erase(uuid);
        asked_[device_id].closing = ++last_call_;
    }
}

// Another device is listed under the id of one that was, whose removal was lost.
void session::implementation::replace(client& with, std::uint32_t device_id) {
    vantu_orvanta_device record{};
    if (vantu_orvanta_device_info(with.context(), device_id, &record) != vantu_orvanta_success) {
        return;
    }
    const std::string listed = value_of(device_id, record).uuid;
    const auto is_another = [&](const device& one) { return one.id == device_id && one.uuid != listed; };
    bool replaced = false;
    {
        const std::lock_guard lock(mutex_);
        replaced = std::any_of(arrived_.begin(), arrived_.end(), is_another);
    }
    if (replaced) {
        remove(device_id);
    }
}

void session::implementation::refresh(client& with, std::uint32_t device_id) {
    vantu_orvanta_device record{};
    if (vantu_orvanta_device_info(with.context(), device_id, &record) != vantu_orvanta_success) {
        return;
    }
    const std::lock_guard lock(mutex_);
    for (device& one : arrived_) {
        if (one.id == device_id) {
            one = value_of(device_id, record);
        }
    }
}

void session::implementation::remove(std::uint32_t device_id) {
    samples_.erase(device_id);
    std::optional<device> gone;
    const bool had_arrived = arrivals_.removed(device_id);
    {
        const std::lock_guard lock(mutex_);
        confirmed_.erase(device_id);
        asked_.erase(device_id);
        const auto found = std::find_if(arrived_.begin(), arrived_.end(),
                                        [device_id](const device& one) { return one.id == device_id; });
        if (found != arrived_.end()) {
            gone = std::move(*found);
            arrived_.erase(found);
        }
    }
    if (had_arrived && gone && options_.callbacks.on_removal) {
        options_.callbacks.on_removal(owner_, *gone);
    }
}

} // namespace vantu::orvanta
