// Decoding: the body of one operation becomes an event.
#pragma once

#include "vantu/orvanta/common/byte_buffer.hpp"
#include "vantu/orvanta/communication/header.hpp"
#include "vantu/orvanta/communication/records.h"

#include <cstdint>

namespace vantu::orvanta {

// Takes the body that follows an operation record out of the buffer and fills the (zeroed) event.
// Lengths are checked before anything is read. Returns:
//   vantu_orvanta_success                the event is filled; its type is 0 for an acknowledgement that
//                                        nobody waits for
//   vantu_orvanta_protocol_parse_failed  the body is cut short: the buffer is emptied; or the client
//                                        receives no such operation: its body is skipped if it is whole,
//                                        else the buffer is emptied
//   vantu_orvanta_invalid_argument       a handedness of 0
// The event is unusable after any other return than success.
[[nodiscard]] std::int32_t decode_operation(byte_buffer& buffer, const communication::proto::op& op,
                                            vantu_orvanta_event& event);

} // namespace vantu::orvanta
