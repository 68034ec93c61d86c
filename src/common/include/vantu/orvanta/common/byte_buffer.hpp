// The byte buffer in which every datagram is composed and from which every datagram is parsed.
#pragma once

#include "vantu/orvanta/common/assume.hpp"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <type_traits>

namespace vantu::orvanta {

namespace constants {
inline constexpr std::uint32_t mode_read = 1;
inline constexpr std::uint32_t mode_write = 2;
inline constexpr std::size_t buffer_capacity = 2048;
} // namespace constants

// The result of byte_buffer::read: a view in place for types that may stand at any address, a copy
// for those that may not.
template <typename T> using read_result = std::conditional_t<alignof(T) == 1, const T&, T>;

// 2048 bytes with a read and a write cursor: read_position <= write_position <= 2048.
// No lock: the receive buffer belongs to who holds the context's mutex, a send buffer to one call.
// The checks guard against programming errors; a parser compares read_len() before it reads.
struct byte_buffer {
    std::uint32_t mode;
    std::uint64_t read_position{0};
    std::uint64_t write_position{0};
    alignas(64) std::byte bytes[constants::buffer_capacity]{}; // a cache line: cleared and copied fastest

    explicit byte_buffer(std::uint32_t mode_bits) : mode(mode_bits) {}

    [[nodiscard]] std::uint64_t read_len() const { return write_position - read_position; }
    [[nodiscard]] std::uint64_t write_len() const { return constants::buffer_capacity - write_position; }
    template <typename T> [[nodiscard]] bool can_read() const { return read_len() >= sizeof(T); }
    template <typename T> [[nodiscard]] bool can_write() const { return write_len() >= sizeof(T); }

    [[nodiscard]] const std::byte* unread() const { return bytes + read_position; }
    [[nodiscard]] std::byte* unwritten() { return bytes + write_position; }

    void skip_write(std::uint64_t len) {
        assume_at(locations::skip_write_length, len <= write_len());
        write_position += len;
    }

    void skip_read(std::uint64_t len) {
        assume_at(locations::skip_read_length, len <= read_len());
        read_position += len;
    }

    // Empties the buffer: nothing is left to read, all room is there to write.
    void reset() {
        read_position = 0;
        write_position = 0;
    }

    // Moves the unread bytes to the front, so that the room after them is as large as it can be.
    void compact() {
        if (read_position == 0) {
            return;
        }
        std::memmove(bytes, unread(), read_len());
        write_position -= read_position;
        read_position = 0;
    }

    // The next sizeof(T) unread bytes. A view is valid until the buffer is next filled or compacted.
    template <typename T> [[nodiscard]] read_result<T> read() {
        static_assert(std::is_trivially_copyable_v<T>);
        assume_at(locations::read_mode, mode & constants::mode_read);
        assume_at(locations::read_length, can_read<T>());
        const std::byte* at = unread();
        skip_read(sizeof(T));
        if constexpr (alignof(T) == 1) {
            return *std::launder(reinterpret_cast<const T*>(at));
        } else {
            T value;
            std::memcpy(&value, at, sizeof(T));
            return value;
        }
    }

    // Appends the bytes of a value; returns the buffer, so that writes chain.
    template <typename T> byte_buffer& write(const T& value) {
        static_assert(std::is_trivially_copyable_v<T>);
        assume_at(locations::write_mode, mode & constants::mode_write);
        assume_at(locations::write_length, can_write<T>());
        std::byte* at = unwritten();
        skip_write(sizeof(T));
        std::memcpy(at, &value, sizeof(T));
        return *this;
    }
};

} // namespace vantu::orvanta
