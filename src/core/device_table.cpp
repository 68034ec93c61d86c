#include "core/device_table.hpp"

#include "vantu/orvanta/communication/bodies.hpp"
#include "vantu/orvanta/error_codes.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace vantu::orvanta {
namespace {

template <typename Record> Record record_of(const vantu_orvanta_event& event) {
    static_assert(sizeof(Record) <= sizeof(event.payload));
    Record record;
    std::memcpy(&record, event.payload, sizeof(record));
    return record;
}

vantu_orvanta_device listed_device(const vantu_orvanta_event& event) {
    const auto listing = record_of<communication::proto::device_description>(event);
    vantu_orvanta_device device{};
    device.update_count = 1;
    device.device_type = listing.device_type;
    device.second_byte = listing.second_byte;
    device.short_id = listing.short_id;
    std::memcpy(device.uuid, listing.uuid, sizeof(device.uuid));
    return device;
}

} // namespace

std::int32_t device_table::apply(const vantu_orvanta_event& event) {
    switch (event.event_type) {
    case vantu_orvanta_event_device_added:
        find_or_create(event.device_id) = listed_device(event);
        break;
    case vantu_orvanta_event_device_removed:
        remove(event.device_id);
        break;
    case vantu_orvanta_event_orvanta3_info: {
        vantu_orvanta_device* device = find_of_type(event.device_id, vantu_orvanta_device_type_orvanta3);
        if (device == nullptr) {
            return vantu_orvanta_no_matching_device;
        }
        const auto details = record_of<vantu_orvanta_orvanta3_info>(event);
        std::memcpy(device->information, details.information, sizeof(device->information));
        device->detail.orvanta3.handedness = details.handedness;
        break;
    }
    case vantu_orvanta_event_palmetron_info: {
        vantu_orvanta_device* device = find_of_type(event.device_id, vantu_orvanta_device_type_palmetron);
        if (device == nullptr) {
            return vantu_orvanta_no_matching_device;
        }
        const auto details = record_of<vantu_orvanta_palmetron_info>(event);
        std::memcpy(device->information, details.information, sizeof(device->information));
        break;
    }
    case vantu_orvanta_event_cursor_state:
    case vantu_orvanta_event_cursor_state_b: {
        vantu_orvanta_device& device = find_or_create(event.device_id);
        device.update_count = device.update_count + 1;
        device.detail.orvanta3.state_kind = event.event_type == vantu_orvanta_event_cursor_state ? 1 : 2;
        std::memcpy(&device.detail.orvanta3.cursor_state, event.payload, sizeof(vantu_orvanta_cursor_state));
        break;
    }
    case vantu_orvanta_event_palmetron_state:
        if (vantu_orvanta_device* device = find(event.device_id); device != nullptr) {
            device->update_count = device->update_count + 1;
            if (device->device_type == vantu_orvanta_device_type_palmetron) {
                device->detail.palmetron_state = record_of<vantu_orvanta_palmetron_state>(event);
            }
        }
        break;
    default:
        break;
    }
    return vantu_orvanta_success;
}

bool device_table::copy_ids(std::uint32_t* ids, std::size_t& count) const {
    const std::size_t room = count;
    count = std::min(room, announced_.size());
    std::copy_n(announced_.begin(), count, ids);
    return announced_.size() <= room;
}

bool device_table::copy_device(std::uint32_t device_id, vantu_orvanta_device& device) const {
    const auto found = devices_.find(device_id);
    if (found == devices_.end()) {
        return false;
    }
    device = found->second;
    return true;
}

void device_table::swap(device_table& other) noexcept {
    devices_.swap(other.devices_);
    announced_.swap(other.announced_);
    std::swap(last_found_id_, other.last_found_id_);
    std::swap(last_found_, other.last_found_);
}

vantu_orvanta_device* device_table::find(std::uint32_t device_id) {
    if (last_found_ != nullptr && last_found_id_ == device_id) {
        return last_found_;
    }
    const auto found = devices_.find(device_id);
    if (found == devices_.end()) {
        return nullptr;
    }
    last_found_id_ = device_id;
    last_found_ = &found->second;
    return last_found_;
}

vantu_orvanta_device* device_table::find_of_type(std::uint32_t device_id, std::uint8_t device_type) {
    vantu_orvanta_device* device = find(device_id);
    return device != nullptr && device->device_type == device_type ? device : nullptr;
}

vantu_orvanta_device& device_table::find_or_create(std::uint32_t device_id) {
    if (vantu_orvanta_device* device = find(device_id); device != nullptr) {
        return *device;
    }
    announced_.push_back(device_id);
    try {
        return devices_[device_id];
    } catch (...) {
        announced_.pop_back();
        throw;
    }
}

void device_table::remove(std::uint32_t device_id) {
    if (devices_.erase(device_id) == 0) {
        return;
    }
    std::erase(announced_, device_id);
    last_found_ = nullptr;
}

} // namespace vantu::orvanta
