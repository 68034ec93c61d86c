// A datagram as one line of text: its operations with their tags and fields, and what is damaged.
#pragma once

#include "vantu/orvanta/communication/operations.hpp"

#include <cstddef>
#include <span>
#include <string>

namespace vantu::orvanta {

// As in "device_open tag=1 device_id=7 value=0"; operations stand with "; " between them, damage in brackets,
// as in "[header cut short: 3 of 6 bytes]". Tag 0 is left out. Of bytes the first 16 are shown. The
// operations are told apart by their stated lengths.
[[nodiscard]] std::string datagram_text(std::span<const std::byte> datagram, communication::direction way);

} // namespace vantu::orvanta
