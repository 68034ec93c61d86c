#include "arrivals.hpp"

#include "vantu/orvanta/common/nanoseconds.hpp"

#include <algorithm>
#include <limits>

namespace vantu::orvanta {

arrivals::state* arrivals::find(std::uint32_t device_id) {
    const auto found = std::find_if(devices_.begin(), devices_.end(),
                                    [device_id](const state& one) { return one.id == device_id; });
    return found == devices_.end() ? nullptr : &*found;
}

void arrivals::listed(std::uint32_t device_id, std::int64_t now_ns) {
    if (find(device_id) == nullptr) {
        devices_.push_back({device_id, time_after(now_ns, patience_ns), false});
    }
}

void arrivals::described(std::uint32_t device_id) {
    if (state* const one = find(device_id); one != nullptr) {
        one->due_ns = std::numeric_limits<std::int64_t>::min();
    }
}

bool arrivals::removed(std::uint32_t device_id) {
    const state* const one = find(device_id);
    const bool had_arrived = one != nullptr && one->arrived;
    std::erase_if(devices_, [device_id](const state& each) { return each.id == device_id; });
    return had_arrived;
}

std::vector<std::uint32_t> arrivals::take_due(std::int64_t now_ns) {
    std::vector<std::uint32_t> due;
    for (state& one : devices_) {
        if (!one.arrived && now_ns >= one.due_ns) {
            one.arrived = true;
            due.push_back(one.id);
        }
    }
    return due;
}

std::int64_t arrivals::due_ns() const {
    std::int64_t earliest = latest_ns;
    for (const state& one : devices_) {
        if (!one.arrived) {
            earliest = std::min(earliest, one.due_ns);
        }
    }
    return earliest;
}

} // namespace vantu::orvanta
