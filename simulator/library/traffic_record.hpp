// The record of a simulator's traffic: lines of a trace, and a capture.
#pragma once

#include "shared/capture_file.hpp"
#include "simulator/simulation/simulation.hpp"
#include "simulator/sockets/server.hpp"
#include "vantu/orvanta/simulator.hpp"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>

namespace vantu::orvanta::simulator {

struct record_times {
    std::function<std::int64_t()> since_start_ns;
    std::function<std::int64_t()> since_1970_ns;
};

class traffic_record {
  public:
    // The simulation outlives the record. Throws std::runtime_error for a capture that cannot be written.
    traffic_record(const service_simulator::settings& wanted, const simulation& simulated,
                   record_times times);

    [[nodiscard]] bool is_wanted() const noexcept { return trace_ || capture_; }

    // A datagram that a socket has received, before the simulation takes it, or has sent.
    void note(const wire_datagram& what);
    // A datagram to which a fault happens, as it is before.
    void note(const fault_note& what);

    // Hands what was captured to the system.
    void flush();

  private:
    void write_line(communication::direction way, const peer& with, std::span<const std::byte> bytes,
                    std::string_view rule);
    [[nodiscard]] const std::string& client_text(const std::string& address, const peer& with);
    void capture(const wire_datagram& what);
    void end_capture(const char* why);

    const simulation& simulated_;
    record_times times_;
    std::function<void(std::string_view line)> trace_;
    std::function<void(std::string_view line)> warn_;
    std::optional<capture_writer> capture_;
    std::map<socket_handle, socket_place> own_places_;
    std::map<std::string, std::string> clients_; // by address, as the service knew them last
};

} // namespace vantu::orvanta::simulator
