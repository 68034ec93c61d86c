// Random choices that are the same on every system.
#pragma once

#include <cstdint>
#include <random>

namespace orvanta_tests {

class chance {
  public:
    explicit chance(std::uint64_t seed) : source_(seed) {}

    // 0 to limit - 1.
    [[nodiscard]] std::uint64_t below(std::uint64_t limit) { return source_() % limit; }
    [[nodiscard]] std::uint64_t between(std::uint64_t least, std::uint64_t most) {
        return least + below(most - least + 1);
    }
    // True once in so many times.
    [[nodiscard]] bool one_in(std::uint64_t times) { return below(times) == 0; }
    [[nodiscard]] std::uint64_t any() { return source_(); }

  private:
    std::mt19937_64 source_;
};

} // namespace orvanta_tests
