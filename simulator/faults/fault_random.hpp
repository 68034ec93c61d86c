// Chances drawn from a seed, the same on every platform: the distributions of the standard library differ
// between its makers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <limits>
#include <span>

namespace vantu::orvanta::simulator {

class fault_random {
  public:
    // Sources of the same seed and other numbers have nothing to do with each other. Made in some
    // nanoseconds: each datagram gets one of its own.
    fault_random(std::uint64_t seed, std::initializer_list<std::uint64_t> numbers) : state_(seed) {
        for (const std::uint64_t number : numbers) {
            state_ = mixed(state_ + mixed(number));
        }
    }

    // From 0 to below the bound, all alike; the bound is above 0.
    [[nodiscard]] std::uint64_t below(std::uint64_t bound) {
        constexpr std::uint64_t greatest = std::numeric_limits<std::uint64_t>::max();
        const std::uint64_t uneven = (greatest % bound + 1) % bound;
        std::uint64_t drawn = next();
        while (drawn > greatest - uneven) {
            drawn = next();
        }
        return drawn % bound;
    }

    [[nodiscard]] std::uint64_t between(std::uint64_t least, std::uint64_t greatest) {
        return least + below(greatest - least + 1);
    }

    // From 0 to below 1, in steps of 2 to the power of -53.
    [[nodiscard]] double real() { return static_cast<double>(next() >> 11U) * 0x1p-53; }

    // Fills bytes with chance, eight from each draw: faults add megabytes a second.
    void fill(std::span<std::byte> bytes) {
        for (; bytes.size() >= sizeof(std::uint64_t); bytes = bytes.subspan(sizeof(std::uint64_t))) {
            const std::uint64_t drawn = next();
            std::memcpy(bytes.data(), &drawn, sizeof drawn);
        }
        if (!bytes.empty()) {
            const std::uint64_t drawn = next();
            std::memcpy(bytes.data(), &drawn, bytes.size());
        }
    }

    // Draws only where there is a choice.
    [[nodiscard]] bool happens(double probability) { return probability >= 1 || real() < probability; }

  private:
    static constexpr std::uint64_t step = 0x9E3779B97F4A7C15U;

    // SplitMix64, whose output depends on the place in its one long cycle alone.
    static std::uint64_t mixed(std::uint64_t value) {
        value += step;
        value = (value ^ (value >> 30U)) * 0xBF58476D1CE4E5B9U;
        value = (value ^ (value >> 27U)) * 0x94D049BB133111EBU;
        return value ^ (value >> 31U);
    }
    std::uint64_t next() {
        const std::uint64_t drawn = mixed(state_);
        state_ += step;
        return drawn;
    }

    std::uint64_t state_;
};

} // namespace vantu::orvanta::simulator
