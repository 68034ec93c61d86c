// Looking into datagrams for the operations that they carry, for those who wait for one.
#pragma once

#include "simulator/simulation/simulation.hpp"

#include <cstddef>
#include <functional>
#include <span>

namespace vantu::orvanta::simulator {

// Tells the observer of each whole operation of a well-formed datagram, up to the first that is cut off or
// lacks its magic. An empty observer is not told.
void observe_operations(std::span<const std::byte> datagram, communication::direction way,
                        const std::function<void(const observed_operation&)>& observer);

} // namespace vantu::orvanta::simulator
