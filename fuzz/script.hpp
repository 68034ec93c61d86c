// A fuzzer's input as steps: numbers and bytes taken from its front. An input that has ended gives zeros.
#pragma once

#include "sessions/reference_reader.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace orvanta_fuzz {

class script {
  public:
    script(const std::uint8_t* data, std::size_t size) : rest_(data, size) {}

    [[nodiscard]] bool has_ended() const { return rest_.empty(); }

    [[nodiscard]] std::uint64_t number(std::size_t width) {
        const auto taken = bytes(width);
        std::uint64_t value = 0;
        for (std::size_t i = taken.size(); i-- > 0;) {
            value = value * 256 + taken[i];
        }
        return value;
    }

    [[nodiscard]] std::uint8_t byte() { return static_cast<std::uint8_t>(number(1)); }

    // As many as are left of so many.
    [[nodiscard]] std::span<const std::uint8_t> bytes(std::size_t most) {
        const auto taken = rest_.first(std::min(most, rest_.size()));
        rest_ = rest_.subspan(taken.size());
        return taken;
    }

    // Up to a line feed, which is taken too.
    [[nodiscard]] std::string_view line() {
        const auto end = std::find(rest_.begin(), rest_.end(), std::uint8_t{'\n'});
        const auto taken = bytes(static_cast<std::size_t>(end - rest_.begin()));
        (void)bytes(1);
        return {reinterpret_cast<const char*>(taken.data()), taken.size()};
    }

  private:
    std::span<const std::uint8_t> rest_;
};

} // namespace orvanta_fuzz
