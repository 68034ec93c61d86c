// Taking datagrams apart for the observer.
#include "simulator/simulation/observation.hpp"

#include "vantu/orvanta/communication/header.hpp"

#include <cstring>

namespace vantu::orvanta::simulator {

using namespace communication;

void observe_operations(std::span<const std::byte> datagram, direction way,
                        const std::function<void(const observed_operation&)>& observer) {
    proto::header header{};
    if (!observer || datagram.size() < sizeof header) {
        return;
    }
    std::memcpy(&header, datagram.data(), sizeof header);
    if (header.magic != proto::header_magic || header.version != proto::protocol_version) {
        return;
    }
    auto unread = datagram.subspan(sizeof header);
    for (proto::op record{}; unread.size() >= sizeof record;) {
        std::memcpy(&record, unread.data(), sizeof record);
        unread = unread.subspan(sizeof record);
        if (record.magic != proto::op_magic || record.length > unread.size()) {
            return;
        }
        observer({way, record.code});
        unread = unread.subspan(record.length);
    }
}

} // namespace vantu::orvanta::simulator
