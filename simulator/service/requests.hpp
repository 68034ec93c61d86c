// The requests that name a device: what each needs before it is carried out, and how it is answered.
#pragma once

#include "simulator/service/clients.hpp"
#include "simulator/service/device.hpp"
#include "simulator/service/outbox.hpp"
#include "vantu/orvanta/communication/service_status.hpp"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>

namespace vantu::orvanta::simulator {

// Keeps the device's configuration for the next start; false when that failed.
using save_function = std::function<bool(const device& which)>;

// Receives one line about what the service does, without a line feed.
using narrate_function = std::function<void(std::string_view line)>;

// A request, with all that carrying it out needs. The body has the length that the operation's row states.
struct request {
    client_registry& clients;
    client& from;
    std::span<device> devices;
    outbox& out;
    const save_function& save;
    const narrate_function& narrate;
    std::int64_t state_period_ns;
    std::int64_t now_ns;
    std::uint8_t code;
    std::uint8_t tag;
    std::span<const std::byte> body;
};

// Carries a request out and puts its answer into the outbox, or returns why it is refused, nothing
// having changed. Checked in this order: the operation names a device at all (invalid_operation), the
// device is there (invalid_device_id), is of the type (invalid_device_type), has been opened by this
// client (device_not_opened), and takes the argument (invalid_argument). A configuration that cannot
// be kept is a device_communication_error.
[[nodiscard]] service_status carry_out(const request& what);

// The device that a request names: the first four bytes of its body; 0 where there are not as many.
[[nodiscard]] std::uint32_t named_device(std::span<const std::byte> body) noexcept;

} // namespace vantu::orvanta::simulator
