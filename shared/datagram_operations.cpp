#include "shared/datagram_operations.hpp"

#include <algorithm>
#include <cstring>

namespace vantu::orvanta {

using namespace communication;

std::optional<operation_place> operation_at(std::span<const std::byte> datagram, std::size_t place) {
    if (place > datagram.size() || datagram.size() - place < sizeof(proto::op)) {
        return std::nullopt;
    }
    proto::op record{};
    std::memcpy(&record, datagram.data() + place, sizeof record);
    if (record.magic != proto::op_magic) {
        return std::nullopt;
    }
    const std::size_t left = datagram.size() - place - sizeof record;
    return operation_place{place, record.code, record.length, record.tag,
                           std::min<std::size_t>(record.length, left)};
}

std::optional<operation_place> find_operation_in(std::span<const std::byte> datagram,
                                                 std::optional<std::uint8_t> code) {
    for (const operation_place& place : operations_in(datagram)) {
        if (place.code == code.value_or(place.code)) {
            return place;
        }
    }
    return std::nullopt;
}

} // namespace vantu::orvanta
