// The terminal that standard output may be.
#pragma once

#include <cstddef>

namespace vantu::orvanta::ctl {

// Whether standard output is a terminal. On Windows it is made to understand escape sequences.
bool output_is_terminal();

// Whether text may be coloured: on a terminal, unless NO_COLOR is set and not empty.
bool output_has_colour();

// The terminal's columns; 80 when it does not tell.
std::size_t terminal_columns();

// The terminal's lines; 24 when it does not tell.
std::size_t terminal_lines();

} // namespace vantu::orvanta::ctl
