#include "simulator/simulation/observed_operations.hpp"

#include "shared/datagram_operations.hpp"
#include "vantu/orvanta/communication/fields.hpp"
#include "vantu/orvanta/communication/header.hpp"

#include <cstring>

namespace vantu::orvanta::simulator {

using namespace communication;

namespace {

bool is_state(const observed_operation& what) {
    return what.way == direction::to_client &&
           (what.code == op_code::cursor_state || what.code == op_code::cursor_state_b ||
            what.code == op_code::palmetron_state);
}

bool names_a_device(const observed_operation& what) {
    const auto fields = fields_of(what.code, what.way);
    return !fields.empty() && fields.front().name == body_fields::device_id.name;
}

} // namespace

void observe_operations(std::span<const std::byte> datagram, direction way, std::uint64_t client,
                        const observe_function& observer) {
    proto::header header{};
    if (datagram.size() < sizeof header) {
        return;
    }
    std::memcpy(&header, datagram.data(), sizeof header);
    if (header.magic != proto::header_magic || header.version != proto::protocol_version) {
        return;
    }
    for (const operation_place& place : operations_in(datagram)) {
        if (place.body_size < place.length) {
            return;
        }
        observer({way, place.code, datagram.subspan(place.body(), place.body_size), client});
    }
}

void operation_counts::count(const observed_operation& what) {
    ++counts_[place_of(what.way)][what.code];
    const bool state = is_state(what);
    std::uint32_t device_id = 0;
    if (what.body.size() < sizeof device_id ||
        !(state || (what.way == direction::to_service && names_a_device(what)))) {
        return;
    }
    std::memcpy(&device_id, what.body.data(), sizeof device_id);
    if (const auto known = devices_.find(device_id); known != devices_.end()) {
        ++(state ? known->second.states : known->second.requests);
    }
}

operation_counts::of_device operation_counts::of(std::uint32_t device_id) const {
    const auto known = devices_.find(device_id);
    return known != devices_.end() ? known->second : of_device{};
}

} // namespace vantu::orvanta::simulator
