#include "simulator/service/device_registry.hpp"

#include <algorithm>

namespace vantu::orvanta::simulator {
namespace {

bool same_type(const device& left, const device& right) {
    return left.description.device_type == right.description.device_type;
}

} // namespace

void device_registry::keep(device which) {
    const auto is_taken = [this, &which](std::uint32_t place) {
        return std::any_of(known_.begin(), known_.end(), [&which, place](const auto& entry) {
            const device& other = entry.second;
            return other.id != which.id && other.place == place && same_type(other, which);
        });
    };
    if (is_taken(which.place)) {
        which.place = 0;
        while (is_taken(which.place)) {
            ++which.place;
        }
    }
    known_.insert_or_assign(which.id, which);
}

std::optional<device> device_registry::next_free(std::uint8_t device_type,
                                                 std::span<const device> plugged) const {
    const auto is_plugged = [plugged](std::uint32_t id) {
        return std::any_of(plugged.begin(), plugged.end(), [id](const device& one) { return one.id == id; });
    };
    const auto of_type = std::count_if(plugged.begin(), plugged.end(), [device_type](const device& one) {
        return one.description.device_type == device_type;
    });
    if (static_cast<std::size_t>(of_type) >= most_devices_of_a_type) {
        return std::nullopt;
    }
    std::optional<device> lowest;
    for (std::uint32_t place = 0; place < most_devices_of_a_type && !lowest; ++place) {
        const device made = make_device(device_type, place);
        if (!known_.contains(made.id) && !is_plugged(made.id)) {
            lowest = made;
        }
    }
    for (const auto& [id, one] : known_) {
        if (one.description.device_type == device_type && !is_plugged(id) && (!lowest || id < lowest->id)) {
            lowest = one;
        }
    }
    return lowest;
}

device device_registry::as_saved(std::uint32_t id) const {
    device which = known_.at(id);
    state_.apply_to({&which, 1});
    return which;
}

} // namespace vantu::orvanta::simulator
