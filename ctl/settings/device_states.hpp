// Motor currents and power supply, which a device tells by itself once it is open, about every second.
#pragma once

#include "ctl/service/connection.hpp"
#include "ctl/settings/values.hpp"

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <utility>

namespace vantu::orvanta::ctl {

// Made before the connection whose callbacks it provides, and kept as long.
class device_states {
  public:
    [[nodiscard]] session::callbacks callbacks();

    // Waits for the first state of this kind of a device that is open. Throws failure_with_status.
    [[nodiscard]] value wait_for(key which, const connection& to, std::uint32_t device_id) const;

  private:
    void keep(std::uint32_t device_id, key which, const value& told);
    [[nodiscard]] std::optional<value> last(std::uint32_t device_id, key which) const;

    mutable std::mutex mutex_;
    std::map<std::pair<std::uint32_t, key>, value> told_;
};

} // namespace vantu::orvanta::ctl
