// Writing datagrams: the header once, then operations with their bodies.
#pragma once

#include "vantu/orvanta/common/byte_buffer.hpp"
#include "vantu/orvanta/communication/bodies.hpp"
#include "vantu/orvanta/communication/header.hpp"

#include <cstdint>

namespace vantu::orvanta::communication {

// Appends one operation to a datagram whose header is written. The body's type and length are those
// of the operation's row.
template <std::uint8_t code, direction way>
void append_operation(byte_buffer& datagram, std::uint8_t tag, const proto::body<code, way>& body) {
    using body_type = proto::body<code, way>;
    constexpr std::uint16_t length = body_size_of(code, way);
    datagram.write(proto::op{proto::op_magic, code, length, tag});
    if constexpr (proto::wire_size<body_type> != 0) {
        datagram.write(body);
    }
}

// Writes a whole datagram of one operation into an empty buffer.
template <std::uint8_t code, direction way>
void compose_datagram(byte_buffer& datagram, std::uint8_t tag, const proto::body<code, way>& body) {
    datagram.write(proto::datagram_header);
    append_operation<code, way>(datagram, tag, body);
}

} // namespace vantu::orvanta::communication
