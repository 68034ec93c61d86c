// The devices that a simulation knows of, plugged in or not, and what they have saved.
#pragma once

#include "simulator/service/device.hpp"
#include "simulator/service/saved_state.hpp"

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>

namespace vantu::orvanta::simulator {

class device_registry {
  public:
    // Saved configurations go into the state, which outlives the registry, or into memory where it is null.
    explicit device_registry(saved_state* state) : state_(state != nullptr ? *state : in_memory_) {}
    device_registry(const device_registry&) = delete;
    device_registry& operator=(const device_registry&) = delete;

    // Keeps the device with the configuration that it has until it saves one, at a place that no other device
    // of its type has: what a device measures depends on its place.
    void keep(device which);

    // The unplugged device of a type with the lowest id, as keep wants it; empty when there can be no more.
    [[nodiscard]] std::optional<device> next_free(std::uint8_t device_type,
                                                  std::span<const device> plugged) const;

    // The device of that id with what it has saved, else as it was kept; the id is known.
    [[nodiscard]] device as_saved(std::uint32_t id) const;

    // Saves the device's configuration. Returns an empty text, or what failed in one line.
    [[nodiscard]] std::string save(const device& which) { return state_.keep(which); }

  private:
    std::map<std::uint32_t, device> known_;
    saved_state in_memory_;
    saved_state& state_;
};

} // namespace vantu::orvanta::simulator
