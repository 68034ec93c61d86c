// The session's devices: their arrival, their removal, and that those kept open are opened again.
#include "session_implementation.hpp"
#include "values.hpp"
#include "vantu/orvanta/orvanta.h"

#include <algorithm>

namespace vantu::orvanta {
namespace {

constexpr int attempts_to_open_again = 5;

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
    if (arriving.empty()) {
        return;
    }
    {
        const std::lock_guard lock(mutex_);
        arrived_.insert(arrived_.end(), arriving.begin(), arriving.end());
        arrivals_so_far_ += arriving.size();
    }
    changed_.notify_all();
    for (const device& one : arriving) {
        if (options_.callbacks.on_arrival) {
            options_.callbacks.on_arrival(owner_, one);
        }
        bool keep = false;
        {
            const std::lock_guard lock(mutex_);
            keep = kept_open_.count(one.uuid) != 0;
        }
        if (keep) {
            open_again(with, one.id, attempts_to_open_again);
        }
    }
}

void session::implementation::open_again(client& with, std::uint32_t device_id, int attempts) {
    const request_options once{options_.request_timeout, nullptr};
    const auto repeat_when_lost = [this, device_id, attempts](client& same, const reply<void>& answer) {
        if (answer.result == outcome::timed_out && attempts > 1) {
            open_again(same, device_id, attempts - 1);
        }
    };
    (void)with.device_open(device_id, 0, repeat_when_lost, once);
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
