// The datagrams of which the library tells, in the form of a capture.
#pragma once

#include "shared/captured_datagram.hpp"
#include "vantu/orvanta/traffic.h"

namespace vantu::orvanta::ctl {

// The datagram as a capture keeps it. Where the library has the beginning of a larger one that it dropped,
// zeros stand for the rest: one where the length is not known.
[[nodiscard]] captured_datagram captured(const vantu_orvanta_traffic& told);

} // namespace vantu::orvanta::ctl
