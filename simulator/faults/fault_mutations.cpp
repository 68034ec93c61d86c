// The faults that change the bytes of one datagram.
#include "simulator/faults/fault_mutations.hpp"

#include "simulator/faults/datagram_view.hpp"
#include "vantu/orvanta/communication/header.hpp"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <limits>

namespace vantu::orvanta::simulator {
namespace {

using namespace communication;

constexpr unsigned bits_of_a_byte = 8;
constexpr std::size_t client_id_size = 8;
constexpr std::uint16_t foreign_body_size = 4;

// The one place where an argument may be left out is where the fault has no use for it.
std::uint32_t number_of(const mutation& what) {
    return what.number.value_or(0);
}

std::byte random_byte(fault_random& chance) {
    return static_cast<std::byte>(chance.below(256));
}

void append_random(datagram_bytes& datagram, std::size_t size, fault_random& chance) {
    datagram.reserve(datagram.size() + size);
    for (std::size_t i = 0; i < size; ++i) {
        datagram.push_back(random_byte(chance));
    }
}

template <typename Field> void put(datagram_bytes& datagram, std::size_t place, const Field& value) {
    std::memcpy(datagram.data() + place, &value, sizeof value);
}

// A number that is anything but this one.
template <typename Number> Number another(Number than, fault_random& chance) {
    const auto drawn = chance.below(std::numeric_limits<Number>::max());
    return static_cast<Number>(drawn < than ? drawn : drawn + 1);
}

std::uint8_t unknown_code(fault_random& chance) {
    std::vector<std::uint8_t> unknown;
    for (unsigned code = 0; code <= std::numeric_limits<std::uint8_t>::max(); ++code) {
        const auto candidate = static_cast<std::uint8_t>(code);
        if (find_operation(candidate, direction::to_client) == nullptr &&
            find_operation(candidate, direction::to_service) == nullptr) {
            unknown.push_back(candidate);
        }
    }
    return unknown[chance.below(unknown.size())];
}

bool cut_to(datagram_bytes& datagram, std::size_t size) {
    if (datagram.size() <= size) {
        return false;
    }
    datagram.resize(size);
    return true;
}

bool grow_to(datagram_bytes& datagram, std::size_t size, fault_random& chance) {
    size = std::min<std::size_t>(size, greatest_datagram);
    if (size <= datagram.size()) {
        return false;
    }
    append_random(datagram, size - datagram.size(), chance);
    return true;
}

// Robert Floyd's choice of so many of all bits, each subset as probable as any other.
bool flip_bits(datagram_bytes& datagram, std::uint32_t wanted, fault_random& chance) {
    const std::size_t all = datagram.size() * bits_of_a_byte;
    const std::size_t count = std::min<std::size_t>(wanted, all);
    std::vector<bool> chosen(all);
    for (std::size_t last = all - count; last < all; ++last) {
        const std::size_t drawn = chance.below(last + 1);
        const std::size_t bit = chosen[drawn] ? last : drawn;
        chosen[bit] = true;
        datagram[bit / bits_of_a_byte] ^= std::byte{1} << (bit % bits_of_a_byte);
    }
    return count != 0;
}

bool spoil_magic(datagram_bytes& datagram, fault_random& chance) {
    if (datagram.size() < sizeof(proto::header)) {
        return false;
    }
    put(datagram, offsetof(proto::header, magic), another(proto::header_magic, chance));
    return true;
}

bool spoil_version(datagram_bytes& datagram, fault_random& chance) {
    if (datagram.size() < sizeof(proto::header)) {
        return false;
    }
    put(datagram, offsetof(proto::header, version), another(proto::protocol_version, chance));
    return true;
}

void put_length(datagram_bytes& datagram, const operation_place& which, std::size_t length) {
    constexpr std::size_t greatest = std::numeric_limits<std::uint16_t>::max();
    put(datagram, which.record + offsetof(proto::op, length),
        static_cast<std::uint16_t>(std::min(length, greatest)));
}

void spoil_code(datagram_bytes& datagram, const operation_place& which, bool lie, fault_random& chance) {
    put(datagram, which.record + offsetof(proto::op, code), unknown_code(chance));
    const std::size_t left = datagram.size() - which.body();
    constexpr std::uint64_t greatest_lie = 1000;
    put_length(datagram, which, lie ? left + chance.between(1, greatest_lie) : which.body_size);
}

bool shorten_body(datagram_bytes& datagram, const operation_place& which) {
    if (which.body_size == 0) {
        return false;
    }
    datagram.erase(datagram.begin() + static_cast<std::ptrdiff_t>(which.end() - 1));
    put_length(datagram, which, which.body_size - 1);
    return true;
}

bool surround(datagram_bytes& datagram, const operation_place& which, fault_random& chance) {
    const proto::op foreign{proto::op_magic, unknown_code(chance), foreign_body_size, 0};
    datagram_bytes added(sizeof foreign);
    put(added, 0, foreign);
    append_random(added, foreign_body_size, chance);
    const auto begin = datagram.begin() + static_cast<std::ptrdiff_t>(which.record);
    const auto end = datagram.begin() + static_cast<std::ptrdiff_t>(which.end());
    added.insert(added.end(), begin, end);
    if (datagram.size() + added.size() > greatest_datagram) {
        return false;
    }
    datagram.insert(end, added.begin(), added.end());
    return true;
}

bool retag(datagram_bytes& datagram, const operation_place& which, std::optional<std::uint32_t> wanted,
           fault_random& chance) {
    const auto tag = wanted.has_value() ? static_cast<std::uint8_t>(*wanted) : another(which.tag, chance);
    put(datagram, which.record + offsetof(proto::op, tag), tag);
    return tag != which.tag;
}

bool readdress(datagram_bytes& datagram, const operation_place& which, std::optional<std::uint32_t> wanted,
               fault_random& chance) {
    // The client id of an acceptance is no device's.
    if (which.code == op_code::connected || which.body_size < sizeof(std::uint32_t)) {
        return false;
    }
    std::uint32_t named = 0;
    std::memcpy(&named, datagram.data() + which.body(), sizeof named);
    const std::uint32_t device = wanted.has_value() ? *wanted : another(named, chance);
    put(datagram, which.body(), device);
    return device != named;
}

bool mutate_operation(datagram_bytes& datagram, const operation_place& which, const mutation& what,
                      fault_random& chance) {
    switch (what.kind) {
    case fault_kind::bad_operation:
        put(datagram, which.record + offsetof(proto::op, magic), another(proto::op_magic, chance));
        return true;
    case fault_kind::unknown_operation:
    case fault_kind::lying_operation:
        spoil_code(datagram, which, what.kind == fault_kind::lying_operation, chance);
        return true;
    case fault_kind::short_body:
        return shorten_body(datagram, which);
    case fault_kind::bad_between:
        return surround(datagram, which, chance);
    case fault_kind::retag:
        return retag(datagram, which, what.number, chance);
    case fault_kind::readdress:
        return readdress(datagram, which, what.number, chance);
    case fault_kind::short_acceptance:
        return cut_to(datagram, which.body() + std::min<std::size_t>(number_of(what), client_id_size));
    default:
        return false;
    }
}

} // namespace

bool is_mutation(fault_kind kind) noexcept {
    constexpr std::array mutations{
        fault_kind::truncate,        fault_kind::extend,        fault_kind::oversize,
        fault_kind::empty,           fault_kind::flip,          fault_kind::bad_magic,
        fault_kind::bad_version,     fault_kind::bad_operation, fault_kind::unknown_operation,
        fault_kind::lying_operation, fault_kind::short_body,    fault_kind::bad_between,
        fault_kind::retag,           fault_kind::readdress,     fault_kind::short_acceptance};
    return std::find(mutations.begin(), mutations.end(), kind) != mutations.end();
}

bool mutate(datagram_bytes& datagram, const mutation& what, fault_random& chance) {
    switch (what.kind) {
    case fault_kind::truncate:
        return cut_to(datagram, number_of(what));
    case fault_kind::empty:
        return cut_to(datagram, 0);
    case fault_kind::extend:
        return grow_to(datagram, datagram.size() + number_of(what), chance);
    case fault_kind::oversize:
        return grow_to(datagram, number_of(what), chance);
    case fault_kind::flip:
        return flip_bits(datagram, number_of(what), chance);
    case fault_kind::bad_magic:
        return spoil_magic(datagram, chance);
    case fault_kind::bad_version:
        return spoil_version(datagram, chance);
    default:
        break;
    }
    const auto code = what.kind == fault_kind::short_acceptance ? op_code::connected : what.code;
    const auto which = find_operation_in(datagram, code);
    return which.has_value() && mutate_operation(datagram, *which, what, chance);
}

} // namespace vantu::orvanta::simulator
