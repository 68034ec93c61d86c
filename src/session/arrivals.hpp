// Which devices are to be announced, and when: each once, with its details if the service sends them in time.
// No clock: times are passed in.
#pragma once

#include <cstdint>
#include <vector>

namespace vantu::orvanta {

class arrivals {
  public:
    // For so long a device waits for its details.
    static constexpr std::uint64_t patience_ns = 100'000'000;

    // The service has listed a device. One that is known keeps its state.
    void listed(std::uint32_t device_id, std::int64_t now_ns);
    // Its details have come.
    void described(std::uint32_t device_id);
    // It is gone. True when it had arrived.
    bool removed(std::uint32_t device_id);
    // All are gone without a word.
    void clear() { devices_.clear(); }

    // The devices that arrive now, in the order of their listing.
    [[nodiscard]] std::vector<std::uint32_t> take_due(std::int64_t now_ns);
    // When the next one is due; the end of time when none is.
    [[nodiscard]] std::int64_t due_ns() const;

  private:
    struct state {
        std::uint32_t id;
        std::int64_t due_ns;
        bool arrived;
    };
    [[nodiscard]] state* find(std::uint32_t device_id);

    std::vector<state> devices_; // in the order of their listing
};

} // namespace vantu::orvanta
