#include "simulator/faults/fault_mutations.hpp"

#include "shared/field_text.hpp"
#include "simulator/faults/fault_fit.hpp"
#include "simulator/faults/fault_patch.hpp"
#include "vantu/orvanta/communication/header.hpp"

#include <algorithm>
#include <cstring>

namespace vantu::orvanta::simulator {
namespace {

using namespace communication;

bool truncate(datagram_bytes& datagram, std::size_t size) {
    if (datagram.size() <= size) {
        return false;
    }
    datagram.resize(size);
    return true;
}

bool extend(datagram_bytes& datagram, std::size_t by, fault_random& chance) {
    const std::size_t before = datagram.size();
    const std::size_t size = std::min<std::size_t>(before + by, greatest_datagram);
    datagram.resize(size);
    chance.fill(std::span(datagram).subspan(before));
    return datagram.size() != before;
}

// Robert Floyd's choice of so many of all bits, each subset as probable as any other.
bool flip_bits(datagram_bytes& datagram, std::size_t wanted, fault_random& chance) {
    constexpr unsigned bits_of_a_byte = 8;
    const std::size_t all = datagram.size() * bits_of_a_byte;
    const std::size_t count = std::min(wanted, all);
    std::vector<bool> chosen(all);
    for (std::size_t last = all - count; last < all; ++last) {
        const std::size_t drawn = chance.below(last + 1);
        const std::size_t bit = chosen[drawn] ? last : drawn;
        chosen[bit] = true;
        datagram[bit / bits_of_a_byte] ^= std::byte{1} << (bit % bits_of_a_byte);
    }
    return count != 0;
}

bool cut_body(datagram_bytes& datagram, const fault_rule& rule, direction way) {
    const auto which = chosen_operation(rule, datagram, way);
    const std::uint32_t size = rule.first.value_or(0);
    if (!which || which->body_size < size) {
        return false;
    }
    const auto end = datagram.begin() + static_cast<std::ptrdiff_t>(which->end());
    datagram.erase(end - size, end);
    const auto length = static_cast<std::uint16_t>(which->body_size - size);
    std::memcpy(datagram.data() + which->record + offsetof(proto::op, length), &length, sizeof length);
    return true;
}

bool insert_bytes(datagram_bytes& datagram, const fault_rule& rule, direction way) {
    const auto which = chosen_operation(rule, datagram, way);
    const datagram_bytes added = bytes_of_hexadecimal(rule.text).value_or(datagram_bytes{});
    if (!which || datagram.size() + added.size() > greatest_datagram) {
        return false;
    }
    const auto place = datagram.begin() + static_cast<std::ptrdiff_t>(which->record);
    datagram.insert(place, added.begin(), added.end());
    return !added.empty();
}

} // namespace

bool mutate(datagram_bytes& datagram, const fault_rule& rule, direction way, fault_random& chance) {
    const std::size_t number = rule.first.value_or(0);
    switch (rule.kind) {
    case fault_kind::truncate:
        return truncate(datagram, number);
    case fault_kind::extend:
        return extend(datagram, number, chance);
    case fault_kind::flip:
        return flip_bits(datagram, number, chance);
    case fault_kind::patch:
        return patch(rule, datagram, way, chance);
    case fault_kind::cut:
        return cut_body(datagram, rule, way);
    case fault_kind::insert:
        return insert_bytes(datagram, rule, way);
    default: // no change, as every_fault.changes_what_is_sent would tell
        return false;
    }
}

} // namespace vantu::orvanta::simulator
