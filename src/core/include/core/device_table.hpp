// The devices that the service has listed, in the order of their announcement, with the latest values
// that it sent of each. No lock: the owner of a table decides who reads it when.
#pragma once

#include "vantu/orvanta/communication/records.h"

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

namespace vantu::orvanta {

class device_table {
  public:
    device_table() = default;
    // Moved, so that no pointer of one table stays with another.
    device_table(device_table&& other) noexcept { swap(other); }
    device_table& operator=(device_table&& other) noexcept {
        swap(other);
        return *this;
    }
    device_table(const device_table&) = delete;
    device_table& operator=(const device_table&) = delete;
    ~device_table() = default;

    // Takes over what a decoded event tells. A listing creates a device or resets it, a removal forgets
    // it, details and states are stored with it; a cursor state creates a device that is not there, with
    // no type. Returns:
    //   vantu_orvanta_success             also when the event changes nothing
    //   vantu_orvanta_no_matching_device  details of a device that is not listed with that type
    // Throws std::bad_alloc, with the table as it was.
    [[nodiscard]] std::int32_t apply(const vantu_orvanta_event& event);

    // Writes the ids into the array, at most count, and sets count to their number. False when there
    // are more.
    [[nodiscard]] bool copy_ids(std::uint32_t* ids, std::size_t& count) const;

    // Copies one device's record. False when it is not there.
    [[nodiscard]] bool copy_device(std::uint32_t device_id, vantu_orvanta_device& device) const;

    void swap(device_table& other) noexcept;

  private:
    // Null when it is not there. Remembers what it found: states of one device come in a row.
    [[nodiscard]] vantu_orvanta_device* find(std::uint32_t device_id);
    [[nodiscard]] vantu_orvanta_device* find_of_type(std::uint32_t device_id, std::uint8_t device_type);
    [[nodiscard]] vantu_orvanta_device& find_or_create(std::uint32_t device_id);
    void remove(std::uint32_t device_id);

    std::unordered_map<std::uint32_t, vantu_orvanta_device> devices_;
    std::vector<std::uint32_t> announced_; // every key of devices_ once
    std::uint32_t last_found_id_{0};
    vantu_orvanta_device* last_found_{nullptr};
};

} // namespace vantu::orvanta
