// Finding the operations in a datagram, whatever its bytes.
#pragma once

#include "vantu/orvanta/communication/header.hpp"

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <span>

namespace vantu::orvanta {

// Where an operation stands: its record at `record`, then as much of its body as is there.
struct operation_place {
    std::size_t record{0};
    std::uint8_t code{0};
    std::uint16_t length{0}; // as the record states it
    std::uint8_t tag{0};
    std::size_t body_size{0}; // bytes of the body that are there, at most those that its length states

    [[nodiscard]] std::size_t body() const { return record + sizeof(communication::proto::op); }
    [[nodiscard]] std::size_t end() const { return body() + body_size; }
};

// The operation whose record begins at a place; empty where there is none.
[[nodiscard]] std::optional<operation_place> operation_at(std::span<const std::byte> datagram,
                                                          std::size_t place);

// The operations after the header, in order, up to the first record that is cut short or lacks its magic.
// Lengths are checked, contents are not. It copies nothing: the datagram has to outlive it.
class operations_in {
  public:
    explicit operations_in(std::span<const std::byte> datagram) : datagram_(datagram) {}

    class iterator {
      public:
        explicit iterator(std::span<const std::byte> datagram)
            : datagram_(datagram), at_(operation_at(datagram, sizeof(communication::proto::header))) {}
        const operation_place& operator*() const { return *at_; }
        iterator& operator++() {
            at_ = operation_at(datagram_, at_->end());
            return *this;
        }
        bool operator==(std::default_sentinel_t /*end*/) const { return !at_.has_value(); }

      private:
        std::span<const std::byte> datagram_;
        std::optional<operation_place> at_;
    };

    [[nodiscard]] iterator begin() const { return iterator(datagram_); }
    [[nodiscard]] static std::default_sentinel_t end() { return {}; }

  private:
    std::span<const std::byte> datagram_;
};

// The first operation of that code, or of any where none is given.
[[nodiscard]] std::optional<operation_place> find_operation_in(std::span<const std::byte> datagram,
                                                               std::optional<std::uint8_t> code);

} // namespace vantu::orvanta
