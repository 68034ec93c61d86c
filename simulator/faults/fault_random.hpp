// Chances drawn from a seed, the same on every platform: the distributions of the standard library differ
// between its makers, its engine does not.
#pragma once

#include <cstdint>
#include <limits>
#include <random>

namespace vantu::orvanta::simulator {

class fault_random {
  public:
    // Sources of the same seed and different ordinals have nothing to do with each other.
    fault_random(std::uint64_t seed, std::uint64_t ordinal) : engine_(mixed(seed + mixed(ordinal))) {}

    // From 0 to below the bound, all alike; the bound is above 0.
    [[nodiscard]] std::uint64_t below(std::uint64_t bound) {
        constexpr std::uint64_t greatest = std::numeric_limits<std::uint64_t>::max();
        const std::uint64_t uneven = (greatest % bound + 1) % bound;
        std::uint64_t drawn = engine_();
        while (drawn > greatest - uneven) {
            drawn = engine_();
        }
        return drawn % bound;
    }

    [[nodiscard]] std::uint64_t between(std::uint64_t least, std::uint64_t greatest) {
        return least + below(greatest - least + 1);
    }

    // From 0 to below 1, in steps of 2 to the power of -53.
    [[nodiscard]] double real() { return static_cast<double>(engine_() >> 11U) * 0x1p-53; }

    // Draws only where there is a choice.
    [[nodiscard]] bool happens(double probability) { return probability >= 1 || real() < probability; }

  private:
    static std::uint64_t mixed(std::uint64_t value) {
        value += 0x9E3779B97F4A7C15U;
        value = (value ^ (value >> 30U)) * 0xBF58476D1CE4E5B9U;
        value = (value ^ (value >> 27U)) * 0x94D049BB133111EBU;
        return value ^ (value >> 31U);
    }

    std::mt19937_64 engine_;
};

} // namespace vantu::orvanta::simulator
