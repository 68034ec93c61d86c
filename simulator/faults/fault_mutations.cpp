#include "simulator/faults/fault_mutations.hpp"

#include "simulator/faults/fault_datagrams.hpp"
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

// The subject of a change. The place is that of an operation for the changes of one.
struct change {
    datagram_bytes& datagram;
    operation_place which;
    std::optional<std::uint32_t> argument;
    fault_random& chance;

    // Where an argument may be left out the fault has no use for it.
    [[nodiscard]] std::uint32_t number() const { return argument.value_or(0); }
};

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

void put_length(const change& made, std::size_t length) {
    constexpr std::size_t greatest = std::numeric_limits<std::uint16_t>::max();
    put(made.datagram, made.which.record + offsetof(proto::op, length),
        static_cast<std::uint16_t>(std::min(length, greatest)));
}

bool cut_to(const change& made, std::size_t size) {
    if (made.datagram.size() <= size) {
        return false;
    }
    made.datagram.resize(size);
    return true;
}

bool grow_to(const change& made, std::size_t size) {
    size = std::min<std::size_t>(size, greatest_datagram);
    if (size <= made.datagram.size()) {
        return false;
    }
    append_random(made.datagram, size - made.datagram.size(), made.chance);
    return true;
}

bool truncate(const change& made) {
    return cut_to(made, made.number());
}

bool extend(const change& made) {
    return grow_to(made, made.datagram.size() + made.number());
}

bool fill_up(const change& made) {
    return grow_to(made, made.number());
}

bool make_empty(const change& made) {
    return cut_to(made, 0);
}

// Robert Floyd's choice of so many of all bits, each subset as probable as any other.
bool flip_bits(const change& made) {
    const std::size_t all = made.datagram.size() * bits_of_a_byte;
    const std::size_t count = std::min<std::size_t>(made.number(), all);
    std::vector<bool> chosen(all);
    for (std::size_t last = all - count; last < all; ++last) {
        const std::size_t drawn = made.chance.below(last + 1);
        const std::size_t bit = chosen[drawn] ? last : drawn;
        chosen[bit] = true;
        made.datagram[bit / bits_of_a_byte] ^= std::byte{1} << (bit % bits_of_a_byte);
    }
    return count != 0;
}

bool spoil_magic(const change& made) {
    if (made.datagram.size() < sizeof(proto::header)) {
        return false;
    }
    put(made.datagram, offsetof(proto::header, magic), another(proto::header_magic, made.chance));
    return true;
}

bool spoil_version(const change& made) {
    if (made.datagram.size() < sizeof(proto::header)) {
        return false;
    }
    put(made.datagram, offsetof(proto::header, version), another(proto::protocol_version, made.chance));
    return true;
}

bool spoil_operation_magic(const change& made) {
    put(made.datagram, made.which.record + offsetof(proto::op, magic), another(proto::op_magic, made.chance));
    return true;
}

bool spoil_code(const change& made) {
    put(made.datagram, made.which.record + offsetof(proto::op, code), unknown_code(made.chance));
    put_length(made, made.which.body_size);
    return true;
}

bool spoil_code_and_length(const change& made) {
    put(made.datagram, made.which.record + offsetof(proto::op, code), unknown_code(made.chance));
    constexpr std::uint64_t most_beyond = 1000;
    const std::size_t left = made.datagram.size() - made.which.body();
    put_length(made, left + made.chance.between(1, most_beyond));
    return true;
}

bool shorten_body(const change& made) {
    if (made.which.body_size == 0) {
        return false;
    }
    made.datagram.erase(made.datagram.begin() + static_cast<std::ptrdiff_t>(made.which.end() - 1));
    put_length(made, made.which.body_size - 1);
    return true;
}

bool surround(const change& made) {
    const proto::op foreign{proto::op_magic, unknown_code(made.chance), foreign_body_size, 0};
    datagram_bytes added(sizeof foreign);
    put(added, 0, foreign);
    append_random(added, foreign_body_size, made.chance);
    const auto begin = made.datagram.begin() + static_cast<std::ptrdiff_t>(made.which.record);
    const auto end = made.datagram.begin() + static_cast<std::ptrdiff_t>(made.which.end());
    added.insert(added.end(), begin, end);
    if (made.datagram.size() + added.size() > greatest_datagram) {
        return false;
    }
    made.datagram.insert(end, added.begin(), added.end());
    return true;
}

bool retag(const change& made) {
    const auto tag = made.argument.has_value() ? static_cast<std::uint8_t>(*made.argument)
                                               : another(made.which.tag, made.chance);
    put(made.datagram, made.which.record + offsetof(proto::op, tag), tag);
    return tag != made.which.tag;
}

bool readdress(const change& made) {
    // The client id of an acceptance is no device's.
    if (made.which.code == op_code::connected || made.which.body_size < sizeof(std::uint32_t)) {
        return false;
    }
    std::uint32_t named = 0;
    std::memcpy(&named, made.datagram.data() + made.which.body(), sizeof named);
    const std::uint32_t device = made.argument.has_value() ? *made.argument : another(named, made.chance);
    put(made.datagram, made.which.body(), device);
    return device != named;
}

bool shorten_acceptance(const change& made) {
    return cut_to(made, made.which.body() + std::min<std::size_t>(made.number(), client_id_size));
}

struct change_row {
    fault_kind kind;
    bool (*make)(const change& made);
};

constexpr std::array changes{
    change_row{fault_kind::truncate, &truncate},
    change_row{fault_kind::extend, &extend},
    change_row{fault_kind::oversize, &fill_up},
    change_row{fault_kind::empty, &make_empty},
    change_row{fault_kind::flip, &flip_bits},
    change_row{fault_kind::bad_magic, &spoil_magic},
    change_row{fault_kind::bad_version, &spoil_version},
    change_row{fault_kind::bad_operation, &spoil_operation_magic},
    change_row{fault_kind::unknown_operation, &spoil_code},
    change_row{fault_kind::lying_operation, &spoil_code_and_length},
    change_row{fault_kind::short_body, &shorten_body},
    change_row{fault_kind::bad_between, &surround},
    change_row{fault_kind::retag, &retag},
    change_row{fault_kind::readdress, &readdress},
    change_row{fault_kind::short_acceptance, &shorten_acceptance},
};

consteval bool every_fault_that_is_a_change_is_made_here() {
    for (const fault_row& row : faults) {
        std::size_t count = 0;
        for (const change_row& one : changes) {
            count += one.kind == row.kind ? 1 : 0;
        }
        if (count != (is_change(row.kind) ? 1 : 0)) {
            return false;
        }
    }
    return true;
}
static_assert(every_fault_that_is_a_change_is_made_here());

} // namespace

bool mutate(datagram_bytes& datagram, const mutation& what, fault_random& chance) {
    const auto* const found = std::find_if(changes.begin(), changes.end(),
                                           [&what](const change_row& one) { return one.kind == what.kind; });
    if (found == changes.end()) {
        return false;
    }
    change made{datagram, {}, what.number, chance};
    if (row_of(what.kind).act == fault_act::operation_change) {
        const auto code = what.kind == fault_kind::short_acceptance ? op_code::connected : what.code;
        const auto which = find_operation_in(datagram, code);
        if (!which.has_value()) {
            return false;
        }
        made.which = *which;
    }
    return found->make(made);
}

} // namespace vantu::orvanta::simulator
