// A whole simulated service without sockets, threads or clocks: the service, its devices and the pipeline of
// faults around it. It counts its own ticks; everything that time drives follows them.
#pragma once

#include "simulator/faults/fault_pipeline.hpp"
#include "simulator/service/device.hpp"
#include "simulator/service/device_registry.hpp"
#include "simulator/service/saved_state.hpp"
#include "simulator/service/service.hpp"
#include "simulator/simulation/observed_operations.hpp"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <utility>
#include <vector>

namespace vantu::orvanta::simulator {

// The simulation's tick, that of the fastest stream.
inline constexpr std::int64_t simulation_tick_ns = 100'000;

struct simulation_settings {
    announce_order announce{announce_order::before};
    bool single_client{false};
    double rate_hz{100};
    std::uint64_t seed{1};
    std::vector<device> devices; // by rising id
    saved_state* state{nullptr}; // null: configurations are saved for as long as the simulation lives
    narrate_function narrate;    // empty: nobody is told
    narrate_function warn;       // told of a configuration that could not be saved; empty: nobody is
};

struct simulation_counters {
    std::uint64_t received{0}; // datagrams from the sockets
    std::uint64_t sent{0};     // datagrams to the sockets
    std::uint64_t restarts{0};
};

class simulation {
  public:
    explicit simulation(simulation_settings settings);
    simulation(const simulation&) = delete;
    simulation& operator=(const simulation&) = delete;

    // Takes a datagram at the present tick.
    void receive(const peer& from, std::span<const std::byte> datagram);

    // Moves the ticks to this time since the start, rounded down to a whole tick, doing on the way what is
    // due, in order of time. Never moves back. What becomes due during a tick is done at the next one, so
    // that the outcome does not depend on how often this is called.
    void advance_to(std::int64_t since_start_ns);
    [[nodiscard]] std::int64_t now_ns() const noexcept { return now_ns_; }
    [[nodiscard]] std::int64_t next_due_ns() const;

    // The datagrams to send now, in order.
    [[nodiscard]] std::vector<departure> take_outgoing() { return outgoing_.take(); }

    // Adds a rule, or does at once what it asks for.
    void add_fault(const fault_rule& rule);
    [[nodiscard]] fault_pipeline& faults() noexcept { return pipeline_; }
    [[nodiscard]] const fault_pipeline& faults() const noexcept { return pipeline_; }

    // Plugs in a device with the next free identity of its type and its saved configuration, and tells all
    // clients (op 16 and its details). 0 when there can be no more of them.
    std::uint32_t plug(std::uint8_t device_type);
    // Takes a device away and tells all clients (op 17); false when there is none of that id. A device that
    // is plugged in again keeps its identity: plug takes the lowest one that is free.
    bool unplug(std::uint32_t device_id);
    // Changes a device's settings as if by hand; false when there is none of that id. Clients that ask see
    // it.
    bool configure(std::uint32_t device_id, const configuration& settings);

    // Sends a datagram of at most 2048 bytes, which the service itself would not; faults can happen to it.
    void send(const peer& to, std::span<const std::byte> datagram);

    // Forgets all clients without a word; every device has its saved configuration again.
    void restart();

    // Tells all clients goodbye and forgets them.
    void say_goodbye();

    // Told of each fault that happens to a datagram, before it does; empty: nobody is told.
    void watch_faults(note_function watcher) { pipeline_.tell(std::move(watcher)); }

    // Told of each operation that the service has received or sent, faults being done, inside receive and
    // advance_to; empty: nobody is told.
    void observe(observe_function observer) { observer_ = std::move(observer); }

    [[nodiscard]] const std::vector<client>& clients() const noexcept { return service_.clients(); }
    // A client's number, which `client=` means, in the order of the first datagrams, from 1. It is the number
    // of its address and port, whether connected or not.
    [[nodiscard]] std::uint64_t number_of(const client& one) const {
        return pipeline_.number_of(one.address);
    }
    // How many clients have been forgotten since the start, for whatever reason.
    [[nodiscard]] std::uint64_t forgotten_clients() const noexcept { return service_.forgotten_clients(); }
    [[nodiscard]] const std::vector<device>& devices() const noexcept { return service_.devices(); }
    [[nodiscard]] const simulation_counters& counters() const noexcept { return counters_; }
    [[nodiscard]] const operation_counts& operations() const noexcept { return operations_; }
    [[nodiscard]] std::uint64_t seed() const noexcept { return seed_; }

  private:
    [[nodiscard]] service_settings settings_of(const simulation_settings& settings);
    [[nodiscard]] std::vector<device> registered(const std::vector<device>& devices);
    [[nodiscard]] bool save(const device& which);

    // Hands on what waits between service and pipeline until all is quiet. The observer may call back.
    void settle();
    void deliver();
    void note(const peer& with, std::span<const std::byte> datagram, communication::direction way);
    void act(const std::vector<requested_action>& wanted);
    void carry_out_late_actions();
    void carry_out(const requested_action& what);

    device_registry registry_;
    operation_counts operations_;
    fault_pipeline pipeline_;
    service service_;
    narrate_function warn_;
    std::uint64_t seed_;
    std::int64_t now_ns_{0};
    waiting_line<departure> outgoing_;
    std::vector<requested_action> late_actions_;
    observe_function observer_;
    simulation_counters counters_;
    bool settling_{false};
};

} // namespace vantu::orvanta::simulator
