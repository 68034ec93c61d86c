// A context's traffic sink, and datagrams that are kept for it until no lock is held.
#pragma once

#include "network/socket.hpp"
#include "vantu/orvanta/common/byte_buffer.hpp"
#include "vantu/orvanta/traffic.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <span>

namespace vantu::orvanta {

// All functions are for any thread.
class traffic_tap {
  public:
    [[nodiscard]] bool is_off() const { return current_.load(std::memory_order_relaxed) == nullptr; }

    // As vantu_orvanta_traffic_sink_set describes it, without its check for null.
    [[nodiscard]] std::int32_t set(vantu_orvanta_traffic_sink sink, void* user_data);

    // Calls the sink, if there is one. To be called without a lock.
    void tell(const vantu_orvanta_traffic& told) noexcept;

  private:
    // Written while it is not the current one and nobody is inside.
    struct place {
        vantu_orvanta_traffic_sink sink{nullptr};
        void* user_data{nullptr};
        std::atomic<std::uint32_t> inside{0}; // calls under way
    };

    std::atomic<place*> current_{nullptr};
    std::mutex setting_;
    std::array<place, 2> places_; // in turn
};

struct moment {
    std::uint64_t steady_ns;
    std::uint64_t system_ns;
};
[[nodiscard]] moment moment_now() noexcept;

// A datagram with all that the sink is told of it; nothing at first.
class noted_datagram {
  public:
    void note_sent(const moment& before, socket_handle from, std::span<const std::byte> bytes,
                   const endpoint& to);

    // The last receive put the datagram into the record's buffer, or dropped it. Nothing has been read of it.
    void note_received(socket_handle at, const receive_record& record);

    // To be called without a lock.
    void tell(traffic_tap& to) const noexcept;

  private:
    void note(const moment& when, std::uint32_t way, socket_handle local, std::span<const std::byte> bytes);

    vantu_orvanta_traffic told_{};
    std::array<std::byte, constants::buffer_capacity> bytes_;
};

} // namespace vantu::orvanta
