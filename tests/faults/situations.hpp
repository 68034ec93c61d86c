// The five situations in which a client meets a fault.
#pragma once

#include "faults/matrix.hpp"

#include <cstdint>
#include <string>

namespace orvanta_tests {

enum class situation : std::uint8_t {
    opening,       // the client connects
    idle,          // it is connected, and a second device is plugged in
    streaming,     // it has opened a device, and three states come
    requesting,    // it asks for the gravity compensation of a device that it has opened
    disconnecting, // it is connected and is destroyed
};

struct observed_row {
    unsigned happened;
    std::string seen;
    std::string logged;
    std::string next;
};

// Plays a row. What it expects is used only to know how long a call that blocks may do so.
[[nodiscard]] observed_row play(situation when, const matrix_row& row);

// Plays a row of the opening that ends the process, the library's log going where it goes by itself.
void play_to_the_end(const matrix_row& row);

} // namespace orvanta_tests
