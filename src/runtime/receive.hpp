// Taking one operation's body out of a datagram: into an event, and into the device table.
#pragma once

#include "runtime/device_table.hpp"
#include "vantu/orvanta/common/utils/data.hpp"
#include "vantu/orvanta/communication/header.hpp"
#include "vantu/orvanta/communication/records.h"

#include <cstdint>

namespace vantu::orvanta {

// Consumes the body that follows an operation record, fills the (zeroed) event and updates the table.
// Lengths are checked before anything is read. Returns 0, or with the event unusable:
//   6  the body is cut short: the buffer is emptied; or the client receives no such operation: its
//      body is skipped if it is whole, else the buffer is emptied
//   7  details of a device that is not listed with that type: the buffer is emptied
//   2  a handedness of 0
[[nodiscard]] std::int32_t receive_operation(byte_buffer& buffer, device_table& devices,
                                             const communication::proto::op& op, vantu_orvanta_event& event);

} // namespace vantu::orvanta
