// The operations that reach the service and those that go out to its clients, faults being done: one by one
// for observers, and counted.
#pragma once

#include "vantu/orvanta/communication/operations.hpp"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <span>

namespace vantu::orvanta::simulator {

struct observed_operation {
    communication::direction way{communication::direction::to_service};
    std::uint8_t code{0};
    std::span<const std::byte> body{}; // as long as its record says
    std::uint64_t client{0};           // the number of the client that it comes from or goes to
};

using observe_function = std::function<void(const observed_operation&)>;

// Each whole operation of a well-formed datagram of a client, up to the first that is cut off or lacks its
// magic.
void observe_operations(std::span<const std::byte> datagram, communication::direction way,
                        std::uint64_t client, const observe_function& observer);

class operation_counts {
  public:
    struct of_device {
        std::uint64_t requests{0}; // of clients, that name it
        std::uint64_t states{0};   // to clients
    };

    void count(const observed_operation& what);

    [[nodiscard]] std::uint64_t of(communication::direction way, std::uint8_t code) const {
        return counts_[place_of(way)][code];
    }

    // Devices are counted from this on, and those of other ids never.
    void know(std::uint32_t device_id) { devices_.try_emplace(device_id); }
    [[nodiscard]] of_device of(std::uint32_t device_id) const;

  private:
    [[nodiscard]] static std::size_t place_of(communication::direction way) {
        return way == communication::direction::to_service ? 0 : 1;
    }

    std::array<std::array<std::uint64_t, 256>, 2> counts_{};
    std::map<std::uint32_t, of_device> devices_;
};

} // namespace vantu::orvanta::simulator
