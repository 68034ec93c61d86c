#include "simulator/faults/fault_chances.hpp"

namespace vantu::orvanta::simulator {
namespace {

// Stands for the operation of a datagram that holds none.
constexpr std::uint64_t no_operation = 256;

std::uint64_t operation_of(std::optional<std::uint8_t> code, const piped_datagram& what) {
    const auto place = find_operation_in(what.bytes, code);
    return place ? place->code : no_operation;
}

} // namespace

fault_chances::draw fault_chances::next(std::uint64_t rule, std::optional<std::uint8_t> code,
                                        const piped_datagram& what) {
    const std::uint64_t client = number_of(what.with);
    const std::uint64_t operation = operation_of(code, what);
    series& such = drawn_[{rule, client, what.way, operation}];
    return {{seed_, {rule, client, static_cast<std::uint64_t>(what.way), operation, such.fitted++}},
            &such.in_burst};
}

} // namespace vantu::orvanta::simulator
