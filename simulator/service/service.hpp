// The device service without sockets, threads or clocks: it is given datagrams and times, and has
// datagrams for its clients in return. Not for use by several threads at once.
#pragma once

#include "simulator/service/announcements.hpp"
#include "simulator/service/clients.hpp"
#include "simulator/service/device.hpp"
#include "simulator/service/outbox.hpp"
#include "simulator/service/requests.hpp"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace vantu::orvanta::simulator {

struct service_settings {
    announce_order announce{announce_order::before};
    bool single_client{false};
    double rate_hz{100}; // 0: no states; at most greatest_rate_hz
    std::uint64_t first_client_id{1};
    save_function save;       // empty: configurations are kept nowhere, and saving them succeeds
    narrate_function narrate; // empty: nobody is told
};

class service {
  public:
    // The devices stand by rising id.
    service(service_settings settings, std::vector<device> devices);

    // Takes one datagram, whatever its bytes. Times never run backwards.
    void receive(const peer& from, std::span<const std::byte> datagram, std::int64_t now_ns);

    // Forgets silent clients and sends what is due.
    void tick(std::int64_t now_ns);

    // When tick has something to do next; never_ns when nothing is due ever.
    [[nodiscard]] std::int64_t next_due_ns() const;

    // Tells all clients that the connection has ended, and forgets them.
    void say_goodbye();
    // The same for one client; nothing happens for a stranger.
    void say_goodbye_to(const peer& who);

    // Forgets all clients without a word and goes on with these devices, which stand by rising id.
    void restart(std::vector<device> devices);

    // Takes a device in and lists it to all clients; false when its id is taken.
    bool plug(const device& which);
    // Takes a device away, also from those that have opened it, and tells all clients; false when there is
    // none of that id.
    bool unplug(std::uint32_t device_id);
    // Changes a device's settings and tells all clients of another handedness, which they cannot ask for;
    // false when there is none of that id.
    bool configure(std::uint32_t device_id, const configuration& settings);

    // The datagrams to send now, in order.
    [[nodiscard]] std::vector<outgoing_datagram> take_outgoing() { return out_.take(); }

    [[nodiscard]] const std::vector<client>& clients() const noexcept { return clients_.all(); }
    [[nodiscard]] std::uint64_t forgotten_clients() const noexcept { return clients_.forgotten(); }
    [[nodiscard]] const std::vector<device>& devices() const noexcept { return devices_; }

  private:
    struct received_operation;

    void receive_operation(const received_operation& what);
    void connect(const received_operation& what);
    void disconnect(const received_operation& what);
    void refuse(const peer& to, std::uint8_t tag, std::uint32_t device_id, service_status status);
    void forget_silent(std::int64_t now_ns);
    void tell(const std::string& line) const;

    service_settings settings_;
    std::int64_t state_period_ns_;
    std::vector<device> devices_;
    client_registry clients_;
    outbox out_;
};

} // namespace vantu::orvanta::simulator
