// The handles that this process has open, and those that a piece of work leaves open; counted in one source
// file a platform.
#pragma once

#include <cstddef>

namespace orvanta_tests {

// How many descriptors or handles there are now. A single count also meets those that the system and other
// threads hold for a moment.
[[nodiscard]] std::size_t open_handles();

// How many of them a call of the work leaves open, rounded over sixteen calls, in which those of a moment
// vanish. One more call goes before, for what is opened once and kept.
template <typename Work> [[nodiscard]] std::ptrdiff_t handles_left_by(const Work& work) {
    constexpr std::ptrdiff_t rounds = 16;
    work();
    const std::size_t before = open_handles();
    for (std::ptrdiff_t i = 0; i < rounds; ++i) {
        work();
    }
    const auto more = static_cast<std::ptrdiff_t>(open_handles() - before);
    return (more + rounds / 2) / rounds;
}

} // namespace orvanta_tests
