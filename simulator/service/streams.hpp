// The streams to a client from the devices that it has opened: states at a rate of choice, motor currents and
// power supply once a second.
#pragma once

#include "simulator/service/clients.hpp"
#include "simulator/service/device.hpp"
#include "simulator/service/outbox.hpp"

#include <cstdint>
#include <span>

namespace vantu::orvanta::simulator {

inline constexpr double greatest_rate_hz = 10'000;

// The time between two states; 0, which stands for no states at all, where the rate is 0.
[[nodiscard]] std::int64_t state_period_of(double rate_hz) noexcept;

// Makes the first state and the first status due now.
void start_streams(open_device& opened, std::int64_t state_period_ns, std::int64_t now_ns) noexcept;

// Sends what is due to one client, packed, each value once however much time has passed.
void send_due(outbox& out, client& to, std::span<device> devices, std::int64_t state_period_ns,
              std::int64_t now_ns);

// When the next value is due for the client; never_ns without an opened device.
[[nodiscard]] std::int64_t next_due_of(const client& to) noexcept;

} // namespace vantu::orvanta::simulator
