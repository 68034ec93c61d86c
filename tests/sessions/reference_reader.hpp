// The protocol's client side, read a second time from docs/protocol.md alone: what connects and polls must
// yield to the byte, which keep-alives are due, and the device table. Nothing of the library is used here.
#pragma once

#include "sessions/reference_writer.hpp"

#include <array>
#include <cstdint>
#include <span>
#include <unordered_map>
#include <vector>

namespace orvanta_tests {

using event_octets = std::array<std::uint8_t, 310>;
using device_octets = std::array<std::uint8_t, 78>;

// The operations that a client receives in polls, and the bytes that each needs.
struct operation_size {
    std::uint8_t code;
    std::uint16_t body;
};
[[nodiscard]] std::span<const operation_size> operation_sizes();

struct expected_poll {
    int code{0};
    bool keep_alive{false};     // one is sent before anything else
    bool tells_event{false};    // false: nothing is said of the event
    std::uint32_t device_id{0}; // of the entry that may have changed
    event_octets event{};

    [[nodiscard]] std::uint32_t event_type() const;
    [[nodiscard]] std::uint8_t tag() const { return event[8]; }
};

struct expected_handshake {
    int code{0};
    bool ends_the_process{false}; // a body that is cut short is read all the same
};

class reference_reader {
  public:
    // Reads the datagram that answers a connect at this time.
    [[nodiscard]] expected_handshake connect(octets answer, std::int64_t now_ns);
    // The same for a connect that gets no answer in time.
    [[nodiscard]] static expected_handshake connect_without_answer();

    // True when the next poll takes a datagram, if there is one.
    [[nodiscard]] bool wants_datagram() const;

    // One poll that takes no datagram, and one that takes this one.
    [[nodiscard]] expected_poll poll(std::int64_t now_ns);
    [[nodiscard]] expected_poll poll(std::int64_t now_ns, octets taken);

    void note_send(std::int64_t now_ns) { last_send_ns_ = now_ns; }
    [[nodiscard]] std::int64_t keep_alive_due_ns() const { return last_send_ns_ + 1'000'000'000; }

    [[nodiscard]] bool is_connected() const { return connected_; }
    void disconnect() { connected_ = false; }
    [[nodiscard]] std::uint64_t client_id() const { return client_id_; }

    // Ids in the order in which their entries were made.
    [[nodiscard]] const std::vector<std::uint32_t>& device_ids() const { return table_.ids; }
    // Null for a device that has no entry.
    [[nodiscard]] const device_octets* device(std::uint32_t id) const;

  private:
    struct device_entries {
        std::vector<std::uint32_t> ids;
        std::unordered_map<std::uint32_t, device_octets> records;

        device_octets* find(std::uint32_t id);
        device_octets& find_or_make(std::uint32_t id);
        void remove(std::uint32_t id);
    };

    [[nodiscard]] expected_poll begin_poll(std::int64_t now_ns);
    [[nodiscard]] int open_datagram(octets taken);
    void take_operation(expected_poll& outcome, device_entries& table);
    [[nodiscard]] int store(std::uint8_t code, std::uint32_t id, std::size_t body, device_entries& table);
    [[nodiscard]] std::size_t left() const { return size_ - at_; }
    [[nodiscard]] std::uint64_t number_at(std::size_t place, std::size_t size) const;
    void drop() { at_ = size_ = 0; }

    std::array<std::uint8_t, 2048> bytes_{}; // the datagram that is being read
    std::size_t size_{0};
    std::size_t at_{0};
    bool connected_{false};
    std::uint64_t client_id_{0};
    std::int64_t last_send_ns_{0};
    device_entries table_;
};

} // namespace orvanta_tests
