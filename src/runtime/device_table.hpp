// The devices that the service has listed, with the latest values that it sent of each.
#pragma once

#include "vantu/orvanta/common/utils/light_mutex.hpp"
#include "vantu/orvanta/communication/bodies.hpp"
#include "vantu/orvanta/communication/records.h"

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <unordered_map>

namespace vantu::orvanta {

// Every function takes the table's own lock for as long as it runs.
class device_table {
  public:
    using description = communication::proto::device_description;

    // Creates a device or resets it to its listing, with an update count of 1. Throws std::bad_alloc.
    void list(std::uint32_t device_id, const description& listing);

    // Forgets a device, if there.
    void remove(std::uint32_t device_id);

    // Store a device's details. False, and nothing stored, unless the device is listed with that type.
    [[nodiscard]] bool store_details(std::uint32_t device_id, const vantu_orvanta_orvanta3_info& details);
    [[nodiscard]] bool store_details(std::uint32_t device_id, const vantu_orvanta_palmetron_info& details);

    // Stores a cursor state and counts it. A device that is not there is created, with no type.
    // Throws std::bad_alloc.
    void store_cursor_state(std::uint32_t device_id, std::uint8_t state_kind,
                            const vantu_orvanta_cursor_state& state);

    // Counts a grip state for a device that is there, and stores it if the device is a grip.
    void store_palmetron_state(std::uint32_t device_id, const vantu_orvanta_palmetron_state& state);

    // Writes the ids into the array, at most count, and sets count to their number. False when there
    // are more.
    [[nodiscard]] bool copy_ids(std::uint32_t* ids, std::size_t& count) const;

    // Copies one device's record. False when it is not there.
    [[nodiscard]] bool copy_device(std::uint32_t device_id, vantu_orvanta_device& device) const;

  private:
    [[nodiscard]] vantu_orvanta_device* find_of_type(std::uint32_t device_id, std::uint8_t device_type);

    mutable light_mutex mutex_;
    std::unordered_map<std::uint32_t, vantu_orvanta_device> devices_;
};

} // namespace vantu::orvanta
