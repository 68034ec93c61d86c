// Which devices the service knows, and the choice of one of them.
#pragma once

#include "app/console.hpp"

#include "vantu/orvanta/client.hpp"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vantu::orvanta::app {

inline constexpr std::size_t most_devices_listed = 16;

struct device_id_list {
    std::vector<std::uint32_t> ids; // empty unless code is 0
    std::int32_t code;
};

// The ids of all known devices. No traffic.
[[nodiscard]] device_id_list list_device_ids(const client& connection);

struct device_lookup {
    vantu_orvanta_device device; // zeros unless code is 0
    std::int32_t code;
};

// The stored record of one device. No traffic.
[[nodiscard]] device_lookup device_report(const client& connection, std::uint32_t id);

// Opens an Orvanta3, asking the user which when there are several. Returns its id; 0, after a
// message, when there is none, and without one when the request to open it cannot be sent.
[[nodiscard]] std::uint32_t find_orvanta3(console& terminal, const client& connection);

} // namespace vantu::orvanta::app
