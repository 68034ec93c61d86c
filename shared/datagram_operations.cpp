#include "shared/datagram_operations.hpp"

#include <algorithm>
#include <cstring>

namespace vantu::orvanta {
namespace {

using namespace communication;

// The operation whose record begins at a place; empty where there is none.
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

} // namespace

std::vector<operation_place> operations_in(std::span<const std::byte> datagram) {
    std::vector<operation_place> found;
    for (auto next = operation_at(datagram, sizeof(proto::header)); next.has_value();
         next = operation_at(datagram, next->end())) {
        found.push_back(*next);
    }
    return found;
}

std::optional<operation_place> find_operation_in(std::span<const std::byte> datagram,
                                                 std::optional<std::uint8_t> code) {
    auto next = operation_at(datagram, sizeof(proto::header));
    while (next.has_value() && code.has_value() && next->code != *code) {
        next = operation_at(datagram, next->end());
    }
    return next;
}

} // namespace vantu::orvanta
