// Accepting a client and telling it of the devices.
#pragma once

#include "simulator/service/clients.hpp"
#include "simulator/service/device.hpp"
#include "simulator/service/outbox.hpp"

#include <cstdint>
#include <span>

namespace vantu::orvanta::simulator {

// The place of the devices in relation to the acceptance.
enum class announce_order : std::uint8_t {
    before, // before it in its datagram, as many as fit; the rest in datagrams that follow
    after,  // all in datagrams that follow
};

// The acceptance and, for each device in turn, its listing and its details. The two of a device are
// never apart: details without a listing are an error to a client.
void accept_client(outbox& out, const peer& to, std::uint8_t tag, std::uint64_t client_id,
                   std::span<const device> devices, announce_order order);

// A device's listing and details to each client, in a datagram of their own.
void announce_device(outbox& out, std::span<const client> to, const device& which);

// The details of an Orvanta3, its handedness among them, likewise: clients cannot ask for them.
void send_orvanta3_details(outbox& out, std::span<const client> to, const device& which);

} // namespace vantu::orvanta::simulator
