// The device table's updates and readers.
#include "runtime/device_table.hpp"

#include <cstring>

namespace vantu::orvanta {
namespace {

template <typename Record, std::size_t size> void copy_bytes(std::uint8_t (&to)[size], const Record& from) {
    static_assert(sizeof(Record) == size);
    std::memcpy(to, &from, size);
}

} // namespace

void device_table::list(std::uint32_t device_id, const description& listing) {
    vantu_orvanta_device device{};
    device.update_count = 1;
    device.device_type = listing.device_type;
    device.second_byte = listing.second_byte;
    device.short_id = listing.short_id;
    copy_bytes(device.uuid, listing.uuid);
    const std::lock_guard lock(mutex_);
    devices_[device_id] = device;
}

void device_table::remove(std::uint32_t device_id) {
    const std::lock_guard lock(mutex_);
    devices_.erase(device_id);
}

bool device_table::store_details(std::uint32_t device_id, const vantu_orvanta_orvanta3_info& details) {
    const std::lock_guard lock(mutex_);
    vantu_orvanta_device* device = find_of_type(device_id, vantu_orvanta_device_type_orvanta3);
    if (device == nullptr) {
        return false;
    }
    copy_bytes(device->information, details.information);
    device->detail.orvanta3.handedness = details.handedness;
    return true;
}

bool device_table::store_details(std::uint32_t device_id, const vantu_orvanta_palmetron_info& details) {
    const std::lock_guard lock(mutex_);
    vantu_orvanta_device* device = find_of_type(device_id, vantu_orvanta_device_type_palmetron);
    if (device == nullptr) {
        return false;
    }
    copy_bytes(device->information, details.information);
    return true;
}

void device_table::store_cursor_state(std::uint32_t device_id, std::uint8_t state_kind,
                                      const vantu_orvanta_cursor_state& state) {
    const std::lock_guard lock(mutex_);
    vantu_orvanta_device& device = devices_[device_id];
    device.update_count = device.update_count + 1;
    device.detail.orvanta3.state_kind = state_kind;
    device.detail.orvanta3.cursor_state = state;
}

void device_table::store_palmetron_state(std::uint32_t device_id,
                                         const vantu_orvanta_palmetron_state& state) {
    const std::lock_guard lock(mutex_);
    const auto found = devices_.find(device_id);
    if (found == devices_.end()) {
        return;
    }
    vantu_orvanta_device& device = found->second;
    device.update_count = device.update_count + 1;
    if (device.device_type == vantu_orvanta_device_type_palmetron) {
        device.detail.palmetron_state = state;
    }
}

bool device_table::copy_ids(std::uint32_t* ids, std::size_t& count) const {
    const std::lock_guard lock(mutex_);
    const std::size_t capacity = count;
    count = 0;
    for (const auto& [device_id, device] : devices_) {
        if (count == capacity) {
            return false;
        }
        ids[count++] = device_id;
    }
    return true;
}

bool device_table::copy_device(std::uint32_t device_id, vantu_orvanta_device& device) const {
    const std::lock_guard lock(mutex_);
    const auto found = devices_.find(device_id);
    if (found == devices_.end()) {
        return false;
    }
    device = found->second;
    return true;
}

vantu_orvanta_device* device_table::find_of_type(std::uint32_t device_id, std::uint8_t device_type) {
    const auto found = devices_.find(device_id);
    return found != devices_.end() && found->second.device_type == device_type ? &found->second : nullptr;
}

} // namespace vantu::orvanta
