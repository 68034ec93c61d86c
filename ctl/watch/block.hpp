// The block of lines that live mode shows of a device.
#pragma once

#include "ctl/watch/recording.hpp"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vantu::orvanta::ctl {

struct block_style {
    std::size_t columns; // of the terminal; no line fills them all
    std::size_t lines;   // of the terminal; the block leaves one for the cursor
    bool colour;
};

// One text a line, without a newline. `rejected` counts the datagrams, or operations of them, that made no
// sense.
std::vector<std::string> block_of(std::string_view title, const live_view& shown, std::uint64_t rejected,
                                  const block_style& style);

// "[    |##  ]", so many characters long: a value between minus and plus the scale.
std::string bar_of(float amount, float scale, std::size_t length);

// The next of 1, 2, 5, 10, ... and their tenths that is not below the value; 1 for nothing.
float scale_for(float greatest);

} // namespace vantu::orvanta::ctl
