// Datagrams of the service out of a script: whole ones of a few bytes an operation, so that most of an
// input's changes reach what is after the length checks, and raw ones.
#pragma once

#include "script.hpp"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace orvanta_fuzz {

class datagram_builder {
  public:
    // Empties the datagram.
    void begin();
    // Appends one operation out of a code, a tag, a device and a number from which the other bytes come.
    void append_operation(script& input);
    // Appends an acceptance.
    void append_acceptance(std::uint64_t client_id);
    // Takes bytes off the end.
    void cut(std::size_t count) { size_ -= count < size_ ? count : size_; }
    // Turns all bits of a byte, if there is one at this place.
    void invert(std::size_t place) {
        if (place < size_) {
            bytes_[place] = ~bytes_[place];
        }
    }
    // Takes all bytes as they are in the script, after their number.
    void take_raw(script& input);

    [[nodiscard]] orvanta_tests::octets bytes() const { return {bytes_.data(), size_}; }

  private:
    void put(std::uint64_t value, int width);

    std::array<std::byte, 2048> bytes_{};
    std::size_t size_{0};
};

// A datagram as a step's number says: raw, or with up to eight operations, now and then spoilt.
void build_datagram(datagram_builder& built, std::uint8_t step, script& input);

// An answer to a connect in the same way: operations before and after the acceptance.
void build_answer(datagram_builder& built, std::uint8_t step, script& input);

} // namespace orvanta_fuzz
