// How tests tell of a client that differs from what the reference reader and writer say.
#pragma once

#include "sessions/reference_writer.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

namespace orvanta_tests {

class difference : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// A failed assumption of the library throws this in the programs where it does not end the process.
class failed_assumption : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

[[nodiscard]] inline std::string said(std::int64_t happened, std::int64_t expected) {
    return std::to_string(happened) + ", not " + std::to_string(expected);
}

template <typename Record, std::size_t size>
void compare_bytes(const Record& happened, const std::array<std::uint8_t, size>& expected, const char* name) {
    static_assert(sizeof(Record) == size);
    if (std::memcmp(&happened, expected.data(), size) == 0) {
        return;
    }
    std::array<std::uint8_t, size> bytes;
    std::memcpy(bytes.data(), &happened, size);
    const auto place = static_cast<std::size_t>(
        std::mismatch(bytes.begin(), bytes.end(), expected.begin()).first - bytes.begin());
    throw difference("byte " + std::to_string(place) + " of " + name + " is " +
                     said(bytes[place], expected[place]));
}

inline void compare_sent(const std::vector<packet>& sent, const std::vector<packet>& expected,
                         const char* name) {
    if (sent != expected) {
        throw difference(std::string("other bytes were sent than ") + name + " has");
    }
}

} // namespace orvanta_tests
