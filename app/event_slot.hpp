// The latest record of one kind of event, written by one thread and read by any without a lock.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace vantu::orvanta::app {

// Starts as a record of zeros. Readers see one whole record, never parts of two: a sequence number,
// odd while a record is being written, tells them to read again. A reader waits only while a record
// is being copied; a writer never waits.
template <typename Record> class event_slot {
    static_assert(std::is_trivially_copyable_v<Record>);

  public:
    // One writer at a time.
    void store(const Record& record) noexcept {
        word_array copy{};
        std::memcpy(copy.data(), &record, sizeof(Record));
        const std::uint32_t sequence = sequence_.load(std::memory_order_relaxed);
        sequence_.store(sequence + 1, std::memory_order_relaxed);
        // Release, so that who reads the word also sees the odd number.
        for (std::size_t i = 0; i < word_count; ++i) {
            words_[i].store(copy[i], std::memory_order_release);
        }
        sequence_.store(sequence + 2, std::memory_order_release);
    }

    // Any number of readers.
    [[nodiscard]] Record load() const noexcept {
        word_array copy{};
        std::uint32_t before = 0;
        std::uint32_t after = 0;
        do {
            before = sequence_.load(std::memory_order_acquire);
            for (std::size_t i = 0; i < word_count; ++i) {
                copy[i] = words_[i].load(std::memory_order_acquire);
            }
            after = sequence_.load(std::memory_order_relaxed);
        } while (before != after || (before & 1U) != 0);
        Record record;
        std::memcpy(&record, copy.data(), sizeof(Record));
        return record;
    }

  private:
    static constexpr std::size_t word_count =
        (sizeof(Record) + sizeof(std::uint32_t) - 1) / sizeof(std::uint32_t);
    using word_array = std::array<std::uint32_t, word_count>;

    std::atomic<std::uint32_t> sequence_{0};
    std::array<std::atomic<std::uint32_t>, word_count> words_{};
};

} // namespace vantu::orvanta::app
